// A directory of everything that trips up a careless program.
#pragma once

#include <string>
#include <vector>

// Fills the existing directory dir and returns the names made in it: FIFO, socket, dangling, looping and long
// links, modes 000, names of 255 bytes, with newline, quotes, blanks, a leading dash, of bytes that are no
// UTF-8, a file with holes, hard links, a tree of a few levels.
std::vector<std::string> hostile_tree_make(const std::string& dir);

// Fills dir with files whose names hold, all together, every byte from 1 to 255 but '/'. The names.
std::vector<std::string> hostile_bytes_make(const std::string& dir);

// Makes a chain of `levels` directories "d/d/d..." below dir, which may lead to a path longer than PATH_MAX.
void hostile_chain_make(const std::string& dir, int levels);
