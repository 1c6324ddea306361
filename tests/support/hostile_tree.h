// A directory of everything that trips up a careless program.
#pragma once

#include <string>
#include <vector>

// Fills the existing directory dir and returns the names made in it: FIFO, dangling, looping and long links,
// hard links, mode 000, 255 bytes, newline, quotes, blanks, a leading dash, no UTF-8, and each byte.
std::vector<std::string> hostile_tree_make(const std::string& dir);

// Makes a chain of `levels` directories "d/d/d..." below dir, which may lead to a path longer than PATH_MAX.
void hostile_chain_make(const std::string& dir, int levels);
