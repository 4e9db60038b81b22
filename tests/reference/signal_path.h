#pragma once

#include <string>

namespace reference {

// What stands before the last "." of the whole path, folders included; all of it without a ".".
inline std::string Stem(const std::string& path) {
  for (std::size_t i = path.size(); i > 0; --i) {
    if (path[i - 1] == '.') return path.substr(0, i - 1);
  }
  return path;
}

// The palate contour's file: beside the signal where a backslash ends the folder's name, otherwise
// the whole path with "pal.dat" after it.
inline std::string PalatePath(const std::string& path) {
  for (std::size_t i = path.size(); i > 0; --i) {
    if (path[i - 1] == '\\') return path.substr(0, i) + "pal.dat";
  }
  return path + "pal.dat";
}

}  // namespace reference
