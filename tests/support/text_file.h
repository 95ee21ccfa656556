// Files that are read and written as a whole.
#pragma once

#include <string>
#include <string_view>

// Both throw a std::system_error that names the file.
std::string readText(const std::string& path);
void writeText(const std::string& path, std::string_view text);
