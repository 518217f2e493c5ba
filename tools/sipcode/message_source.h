// Messages out of files.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// The file's bytes as they are; "-" is standard input. Throws std::system_error when it cannot be read; what() begins with
// the name below.
std::string read_source(const std::string &file);

// What messages call the file.
std::string source_name(const std::string &file);

// The messages of a text: a line that is "----" stands between two. That line is no part of either, and the one before it
// keeps its line end. A separator at the beginning or the end of the text, or behind another, makes no empty message;
// a text without anything else is one empty message.
std::vector<std::string_view> split_messages(std::string_view text);
