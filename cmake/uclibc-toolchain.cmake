# The board with its own C library: 32-bit big-endian MIPS, uClibc, static executables. Tests run under user-mode
# emulation. The toolchain is what tools/uclibc-toolchain builds, or one of the user's own: docs/target.md.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR mips)

set(GFAST_UCLIBC "$ENV{GFAST_UCLIBC}" CACHE PATH "Folder of the toolchain; empty: where tools/uclibc-toolchain puts it")
set(GFAST_UCLIBC_PREFIX bin/mips-linux-uclibc- CACHE STRING "What comes before gcc, g++ and ar in that folder")
set(gfast_uclibc "${GFAST_UCLIBC}")
if(NOT gfast_uclibc)
  execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/../tools/uclibc-toolchain --where
    OUTPUT_VARIABLE gfast_uclibc OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
endif()
if(NOT EXISTS "${gfast_uclibc}/${GFAST_UCLIBC_PREFIX}g++")
  message(FATAL_ERROR "No uClibc toolchain in ${gfast_uclibc}: run tools/uclibc-toolchain")
endif()
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES GFAST_UCLIBC GFAST_UCLIBC_PREFIX)

set(CMAKE_C_COMPILER ${gfast_uclibc}/${GFAST_UCLIBC_PREFIX}gcc)
set(CMAKE_CXX_COMPILER ${gfast_uclibc}/${GFAST_UCLIBC_PREFIX}g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-mips-static)
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
