// "zan-op list": the rows of a directory as the file list shows them.
#pragma once

// argv[0] is "list". The exit status: 0, 1 when the directory cannot be read or the rows not be written, 2
// for wrong arguments.
int op_list(int argc, char** argv);

// Its arguments, as text of several lines.
const char* op_list_help();
