# Writes the C++ file that holds the banner's build time: cmake -DOUT=FILE -DSOURCE=FOLDER -P build-time.cmake
# The time is SOURCE_DATE_EPOCH where the environment has it, else that of the commit, so that the same sources make the
# same program whenever and wherever it is built. Sources without git have the commit's time when git exported them,
# else the first second of 1970. Always UTC.
set(seconds "$ENV{SOURCE_DATE_EPOCH}")
if(seconds STREQUAL "" AND EXISTS ${SOURCE}/.git)
  execute_process(COMMAND git -C ${SOURCE} log -1 --format=%ct
    OUTPUT_VARIABLE seconds OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
elseif(seconds STREQUAL "" AND EXISTS ${SOURCE}/cmake/commit-time)
  file(STRINGS ${SOURCE}/cmake/commit-time seconds)
endif()
if(NOT "${seconds}" MATCHES "^[0-9]+$")
  set(seconds 0)
endif()
# string(TIMESTAMP) takes the time from there.
set(ENV{SOURCE_DATE_EPOCH} ${seconds})
string(TIMESTAMP time "%b %d %Y %H:%M:%S" UTC)
# As the compiler's __DATE__ has it: a day below 10 has a blank before it.
string(REGEX REPLACE "^(...) 0" "\\1  " time "${time}")
set(text "#include \"qvrcli/build_time.h\"

namespace gfast::console {
const char* const kBuildTime = \"${time}\";
}  // namespace gfast::console
")
if(EXISTS ${OUT})
  file(READ ${OUT} before)
endif()
if(NOT text STREQUAL "${before}")
  file(WRITE ${OUT} "${text}")
endif()
