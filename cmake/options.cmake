# How everything here is compiled: link gfast::options.
add_library(gfast_options INTERFACE)
add_library(gfast::options ALIAS gfast_options)
target_compile_options(gfast_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
target_compile_definitions(gfast_options INTERFACE _GNU_SOURCE)
target_link_libraries(gfast_options INTERFACE Threads::Threads)
if(CMAKE_CROSSCOMPILING)
  # The board has little memory: what nothing refers to stays out of the executable.
  target_compile_options(gfast_options INTERFACE -ffunction-sections -fdata-sections)
  target_link_options(gfast_options INTERFACE -Wl,--gc-sections)
endif()
include(cmake/static_threads.cmake)
if(GFAST_SANITIZE)
  set(sanitize -fsanitize=${GFAST_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  # For the folders, not for gfast::options: these come first, so a target can leave a check out.
  add_compile_options(${sanitize})
  add_link_options(${sanitize})
endif()
if(GFAST_FUZZ)
  # Tells a fuzzer which ways the product took.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
