# What the project takes from the distribution. On a desk its packages are used as they are; for the board the
# header-only ones serve as well, and libcli and GoogleTest are built from the distribution's sources.
find_package(Threads REQUIRED)

add_library(gfast_libcli INTERFACE)
add_library(gfast::libcli ALIAS gfast_libcli)

# Programs carry {fmt} inside. Its functions are compiled once, from its headers: a file that compiles them itself takes
# four times as long. The library's two files do, because it is installed and linked without {fmt}.
add_library(gfast-fmt STATIC cmake/fmt_functions.cpp)
add_library(gfast::fmt ALIAS gfast-fmt)
target_link_libraries(gfast-fmt PRIVATE gfast::options)

# What serves readings to other machines. A board has it when it is asked for: it makes the program larger.
if(CMAKE_CROSSCOMPILING)
  set(serves OFF)
else()
  set(serves ON)
endif()
option(GFAST_HTTP "Serve readings over HTTP" ${serves})
add_library(gfast_http INTERFACE)
add_library(gfast::http ALIAS gfast_http)

if(NOT CMAKE_CROSSCOMPILING)
  find_package(fmt REQUIRED)
  target_include_directories(gfast-fmt SYSTEM PUBLIC
    $<TARGET_PROPERTY:fmt::fmt-header-only,INTERFACE_INCLUDE_DIRECTORIES>)
  find_package(tomlplusplus REQUIRED)
  find_package(CLI11 REQUIRED)

  # Only libcli's archive is used, so the same code runs on a desk and on the board.
  find_library(LIBCLI_ARCHIVE NAMES libcli.a REQUIRED)
  find_library(CRYPT_LIBRARY crypt REQUIRED)
  if(BUILD_TESTING)
    find_package(GTest REQUIRED)
  endif()
  # The transforms' yardstick, in tests and benchmarks only.
  if(BUILD_TESTING OR GFAST_BENCHMARKS)
    find_library(FFTW_LIBRARY fftw3 REQUIRED)
    add_library(gfast_fftw INTERFACE)
    add_library(gfast::fftw ALIAS gfast_fftw)
    target_link_libraries(gfast_fftw INTERFACE ${FFTW_LIBRARY})
  endif()
  target_link_libraries(gfast_libcli INTERFACE ${LIBCLI_ARCHIVE} ${CRYPT_LIBRARY})
  if(GFAST_HTTP)
    find_library(HTTPLIB_LIBRARY cpp-httplib REQUIRED)
    # The package is compiled with these, and its classes look different without.
    target_compile_definitions(gfast_http INTERFACE
      CPPHTTPLIB_OPENSSL_SUPPORT CPPHTTPLIB_ZLIB_SUPPORT CPPHTTPLIB_BROTLI_SUPPORT)
    target_link_libraries(gfast_http INTERFACE ${HTTPLIB_LIBRARY})
  endif()
  return()
endif()

# The compiler for the board must not see the desk's /usr/include, so what is needed of it is linked elsewhere.
set(shared_headers ${CMAKE_BINARY_DIR}/shared-headers)
file(MAKE_DIRECTORY ${shared_headers})
foreach(library fmt toml++ CLI)
  if(NOT EXISTS /usr/include/${library})
    message(FATAL_ERROR "/usr/include/${library} is missing: install libfmt-dev, libtomlplusplus-dev, libcli11-dev")
  endif()
  file(CREATE_LINK /usr/include/${library} ${shared_headers}/${library} SYMBOLIC)
endforeach()

add_library(fmt::fmt-header-only INTERFACE IMPORTED)
# Without a separator of its own {fmt} asks the locale for one, and all of libstdc++'s locales come along.
set(own_separator "FMT_STATIC_THOUSANDS_SEPARATOR=','")
target_compile_definitions(fmt::fmt-header-only INTERFACE FMT_HEADER_ONLY=1 ${own_separator})
target_compile_definitions(gfast-fmt PUBLIC ${own_separator})
target_include_directories(gfast-fmt SYSTEM PUBLIC ${shared_headers})
add_library(tomlplusplus::tomlplusplus INTERFACE IMPORTED)
target_compile_definitions(tomlplusplus::tomlplusplus INTERFACE TOML_HEADER_ONLY=1)
add_library(CLI11::CLI11 INTERFACE IMPORTED)
foreach(library fmt::fmt-header-only tomlplusplus::tomlplusplus CLI11::CLI11)
  target_include_directories(${library} SYSTEM INTERFACE ${shared_headers})
endforeach()

set(LIBCLI_SOURCE ${CMAKE_BINARY_DIR}/libcli CACHE PATH "libcli's source; fetched when there is none")
if(NOT EXISTS ${LIBCLI_SOURCE}/libcli.c)
  execute_process(COMMAND ${CMAKE_SOURCE_DIR}/tools/fetch-source libcli ${LIBCLI_SOURCE}
    COMMAND_ERROR_IS_FATAL ANY)
endif()
# No password exists on this console, so nothing of crypt is needed: see no_crypt.c.
add_library(libcli_board STATIC ${LIBCLI_SOURCE}/libcli.c ${CMAKE_SOURCE_DIR}/cmake/no_crypt.c)
target_include_directories(libcli_board SYSTEM PUBLIC ${LIBCLI_SOURCE})
target_link_libraries(gfast_libcli INTERFACE libcli_board)

if(GFAST_HTTP)
  if(NOT EXISTS /usr/include/nlohmann)
    message(FATAL_ERROR "/usr/include/nlohmann is missing: install nlohmann-json3-dev")
  endif()
  file(CREATE_LINK /usr/include/nlohmann ${shared_headers}/nlohmann SYMBOLIC)
  set(HTTPLIB_SOURCE ${CMAKE_BINARY_DIR}/cpp-httplib CACHE PATH "cpp-httplib's source; fetched when there is none")
  if(NOT EXISTS ${HTTPLIB_SOURCE}/httplib.h)
    execute_process(COMMAND ${CMAKE_SOURCE_DIR}/tools/fetch-source cpp-httplib ${HTTPLIB_SOURCE}
      COMMAND_ERROR_IS_FATAL ANY)
  endif()
  target_include_directories(gfast_http SYSTEM INTERFACE ${shared_headers} ${HTTPLIB_SOURCE})
endif()

if(BUILD_TESTING)
  set(INSTALL_GTEST OFF)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
endif()
