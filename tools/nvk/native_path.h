// Paths in this system's own syntax ("/home/ann/Société") are in the
// charset of its file names, UTF-8, where the library's text, drive-form
// paths included, is Windows-1252; the path map takes and gives the former.
#pragma once

#include <string>
#include <string_view>

namespace nvk::tool {

// A native path given as the library's text, for the path map and the
// standard library's file calls.
std::string NativeFromAnsi(std::string_view ansi);
// A native path as the library's text, to show: bytes that are not UTF-8
// (a name an older writer left in Windows-1252) stay as they are, and a
// character Windows-1252 lacks becomes '?'.
std::string AnsiFromNative(std::string_view native);

}  // namespace nvk::tool
