# Debian packages, one for each component of cmake/install.cmake: cpack in the build folder, once the target
# "installed" is built.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME gfast)
set(CPACK_PACKAGE_CONTACT "gfast-cli maintainers <maintainers@gfast-cli.invalid>")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL cli lab library)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# debian_package(<component> <package> <section> <first line> <text>)
macro(debian_package component package section summary text)
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${summary}\n${text}")
  install(FILES packaging/debian/copyright
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
  install_packed(packaging/debian/changelog changelog ${CMAKE_INSTALL_DATADIR}/doc/${package} ${component})
endmacro()

debian_package(cli gfast-cli net "console for G.fast modem lines"
"A telnet console, or a script, in front of one or two G.fast (ITU-T G.9701)
modem chips: it shows and changes their lines, reads counters and tables of
tones, and makes tests. The service of systemd is installed, but not started.")
set(CPACK_DEBIAN_CLI_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_CLI_PACKAGE_CONTROL_EXTRA
  ${PROJECT_SOURCE_DIR}/packaging/debian/postinst
  ${PROJECT_SOURCE_DIR}/packaging/debian/prerm
  ${PROJECT_SOURCE_DIR}/packaging/debian/postrm)

debian_package(lab gfast-lab net "G.fast modem lines made of software"
"gfast-lab is the console of gfast-cli in front of a virtual board: two modem
chips made of software, joined by a copper pair. gfast-desk and gfast-cuse put
the virtual board behind device files for any program. gfast-report writes a
report of a line.")
set(CPACK_DEBIAN_LAB_PACKAGE_SHLIBDEPS ON)

debian_package(library libgfast-sdk-dev libdevel "library that manages G.fast modem chips"
"Headers, an archive, and files for CMake and pkg-config. The library opens
the chips' device files, and reads and configures their lines; it is used from
C and C++.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS "libc6-dev, libstdc++-12-dev")

include(CPack)
