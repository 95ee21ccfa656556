# Writes the C++ file that holds the page: cmake -DOUT=FILE -DPARTS=FILE,FILE,... -P embed-page.cmake
# The parts come one behind the other. They are read as hexadecimal digits, so nothing in them needs an escape.
string(REPLACE "," ";" parts ${PARTS})
set(all "")
foreach(part ${parts})
  file(READ ${part} hex HEX)
  string(APPEND all ${hex})
endforeach()
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes ${all})
string(LENGTH ${all} digits)
math(EXPR size "${digits} / 2")
file(WRITE ${OUT} "#include \"qvrcli/serve/page.h\"\n
namespace gfast::console {
const char page[] = {${bytes}};
const size_t pageSize = ${size};
}  // namespace gfast::console\n")
