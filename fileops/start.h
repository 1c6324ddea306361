// How the interface starts an operation.
#pragma once

#include <string>

#include "fileops/transfer.h"

enum : int { FOP_COPY = 0, FOP_MOVE = 1, FOP_DELETE = 2 };

// Opens a slot and starts the operation. destination is "" for a delete. 0, or -1 when it could not start.
int _file_op(int kind, const TransferList& list, const std::string& destination);
