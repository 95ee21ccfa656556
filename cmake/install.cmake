# What is installed, in components that are packages as well (cmake/packages.cmake): "library", for programs that link it
# with or without CMake, "cli", and "lab".
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# Everything that is installed, without tests and benchmarks.
add_custom_target(installed DEPENDS gfast-sdk gfast-kernel-driver)

# install_packed(<file> <name> <folder> <component>): as <name>.gz.
function(install_packed file name folder component)
  set(packed ${CMAKE_CURRENT_BINARY_DIR}/packed/${component}/${name}.gz)
  # Without its own name and time, so that the same text makes the same file.
  add_custom_command(OUTPUT ${packed}
    COMMAND ${CMAKE_COMMAND} -E make_directory packed/${component}
    COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/${file} > ${packed}
    DEPENDS ${PROJECT_SOURCE_DIR}/${file} VERBATIM)
  add_custom_target(packed-${component}-${name} ALL DEPENDS ${packed})
  add_dependencies(installed packed-${component}-${name})
  install(FILES ${packed} DESTINATION ${folder} COMPONENT ${component})
endfunction()

# install_programs(<component> <program>...): with their manual pages.
function(install_programs component)
  install(TARGETS ${ARGN} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${component})
  add_dependencies(installed ${ARGN})
  foreach(program ${ARGN})
    install_packed(docs/man/${program}.1 ${program}.1 ${CMAKE_INSTALL_MANDIR}/man1 ${component})
  endforeach()
endfunction()

install_programs(cli gfast-cli)
install(FILES packaging/systemd/gfast-cli.service DESTINATION lib/systemd/system COMPONENT cli)
set(lab_programs gfast-lab gfast-desk gfast-cuse)
if(TARGET gfast-report)
  list(APPEND lab_programs gfast-report)
endif()
install_programs(lab ${lab_programs})
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/gfast-lab COMPONENT lab
  FILES_MATCHING PATTERN "*.md" PATTERN "*.toml" PATTERN man EXCLUDE)
# A program that is completed finds its file by its own name.
foreach(program ${lab_programs})
  install(FILES packaging/completion/gfast-lab
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME ${program} COMPONENT lab)
endforeach()

# One folder of headers, so that one -I is enough. Of chip/ and std/ only what the public headers are made from.
set(headers ${CMAKE_INSTALL_INCLUDEDIR}/gfast-sdk)
install(DIRECTORY gfast-sdk/include/ DESTINATION ${headers} COMPONENT library)
install(
  FILES
    gfast-sdk/chip/counter_records.h
    gfast-sdk/chip/init_failure_causes.h
    gfast-sdk/chip/parameter_ids.h
  DESTINATION ${headers}/chip
  COMPONENT library)
install(FILES gfast-sdk/std/c_words.h DESTINATION ${headers}/std COMPONENT library)

set(package ${CMAKE_INSTALL_LIBDIR}/cmake/gfast-sdk)
set_target_properties(gfast-kernel-driver PROPERTIES EXPORT_NAME kernel-driver)
if(GFAST_SANITIZE)
  # Archives that are built with a sanitizer need its runtime wherever they are linked, and what it has for C++ in a C
  # program, too.
  set(runtime -fsanitize=${GFAST_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)
    list(APPEND runtime -fsanitize-link-c++-runtime)
  endif()
  foreach(option ${runtime})
    target_link_options(gfast-sdk INTERFACE $<INSTALL_INTERFACE:${option}>)
    string(APPEND SANITIZE " ${option}")
  endforeach()
endif()
install(
  TARGETS gfast-sdk gfast-kernel-driver
  EXPORT gfast-sdk-targets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library
  INCLUDES DESTINATION ${headers})
install(EXPORT gfast-sdk-targets NAMESPACE gfast-sdk:: DESTINATION ${package} COMPONENT library)

configure_package_config_file(
  cmake/gfast-sdk-config.cmake.in gfast-sdk-config.cmake INSTALL_DESTINATION ${package})
write_basic_package_version_file(gfast-sdk-config-version.cmake COMPATIBILITY SameMajorVersion)
install(
  FILES
    ${CMAKE_CURRENT_BINARY_DIR}/gfast-sdk-config.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/gfast-sdk-config-version.cmake
  DESTINATION ${package}
  COMPONENT library)

# From where it lies, so that the tree can be moved.
set(pkgconfig ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
string(REGEX REPLACE "[^/]+" ".." PREFIX_FROM_PC ${pkgconfig})
configure_file(cmake/gfast-sdk.pc.in gfast-sdk.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/gfast-sdk.pc DESTINATION ${pkgconfig} COMPONENT library)
