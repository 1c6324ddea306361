// zan-op copy|move|delete.
#pragma once

// argv[0] is the command's name: "copy", "move" or "delete". The exit status: 0 done, 1 aborted or cancelled,
// 2 for a usage error, which is told on standard error.
int op_operate(int argc, char** argv);

// Its arguments, as text of several lines.
const char* op_operate_help();
