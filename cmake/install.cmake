# What is installed, in two components: "library", for programs that link it with or without CMake, and
# "programs".
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS gfast-cli gfast-lab RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT programs)
if(TARGET gfast-report)
  install(TARGETS gfast-report RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT programs)
endif()

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
  # Archives that are built with a sanitizer need its runtime wherever they are linked.
  target_link_options(gfast-sdk INTERFACE $<INSTALL_INTERFACE:-fsanitize=${GFAST_SANITIZE}>)
  set(SANITIZE " -fsanitize=${GFAST_SANITIZE}")
endif()
install(
  TARGETS gfast-sdk gfast-kernel-driver
  EXPORT gfast-sdk-targets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library
  INCLUDES DESTINATION ${headers})
install(EXPORT gfast-sdk-targets NAMESPACE gfast-sdk:: DESTINATION ${package} COMPONENT library)

configure_package_config_file(
  cmake/gfast-sdk-config.cmake.in gfast-sdk-config.cmake INSTALL_DESTINATION ${package})
# Before 1.0 a minor version may change anything.
write_basic_package_version_file(gfast-sdk-config-version.cmake COMPATIBILITY SameMinorVersion)
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
