// A directory of everything that trips up a careless program.
#pragma once

#include <string>
#include <vector>

// Fills the existing directory dir and returns the names made in it: FIFO, socket, dangling, looping and long
// links, modes 000, a name of 255 bytes, names with newline, quotes, blanks, a leading dash and of bytes that
// are no UTF-8, one with each byte, a file with holes, hard links, a tree of a few levels.
std::vector<std::string> hostile_tree_make(const std::string& dir);

// Makes a chain of `levels` directories "d/d/d..." below dir, which may lead to a path longer than PATH_MAX.
void hostile_chain_make(const std::string& dir, int levels);
