// Running external commands. Nothing started is ever waited for.
#pragma once

#include <string>
#include <vector>

// Runs a template on one name, or with name null on the selection of gDir. -1 refused, 0 empty template.
int file_cmd(const char* command_template, const char* name);
// Runs a shell command line in a terminal (keep_open: the terminal stays). -1 for an empty one.
int misc_run(int input_group, int keep_open, const char* command);
// Starts program (found along PATH) with the arguments behind argv[0]. 0, or -1.
int misc_spawn(int input_group, const std::string& program, const std::vector<std::string>& arguments);
