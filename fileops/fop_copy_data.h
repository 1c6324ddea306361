// The bytes of a regular file.
#pragma once

#include <sys/stat.h>

#include <string>

#include "fileops/fop.h"

struct fop_content {
  fop_request* request;
  int in, out;
  const std::string& source;  // paths, for the questions
  const std::string& dest;
  struct stat status;  // of the opened source
  int64_t accounted;   // bytes that done_bytes holds for this file
  bool in_place;       // out holds an older content until the first bytes are ready to take its place
  bool* touched;       // set when that goes
  int64_t copied = 0;
};

// Copies to the end of the source, holes as holes. 0 done; 1 skipped and -1 abort: the copy is incomplete.
int fop_copy_content(fop_content* content);
// Alert "Error writing" with the errno's text: -1 for Abort, else 1.
int fop_write_failed(fop_request* request, const std::string& dest);
