// The copy pass: items of the work list, group by group, each made anew at the destination.
#pragma once

#include <sys/stat.h>

#include <string>

#include "fileops/fop.h"
#include "fileops/fop_path.h"

// A group's directories, opened for as long as its names are copied.
struct fop_place {
  fop_request* request = nullptr;
  int32_t group = 0;
  fop_fd source, dest;
  int source_error = 0, dest_error = 0;  // errno where one could not be opened
};

// One item on its way.
struct fop_item {
  fop_place* place;
  int32_t index;
  const char* name;
  std::string source, dest;  // full paths
  int dest_dir;              // opened, AT_FDCWD for a shorter name that the user chose, or -1
  std::string dest_name;     // in dest_dir
  struct stat status;        // of the source
  fop_request* request() const { return place->request; }
};

// Results of copying an item: 0 done, 1 skipped, -1 abort.

// Copies all groups. 0; -1 when it was stopped: every name not reached is then empty.
int fop_copy_groups(fop_request* request);
// Copies one item; child is its group when it is a directory that was listed, else -1.
int fop_copy_file(fop_place* place, int32_t index, int32_t child);
fop_place fop_open_place(fop_request* request, int32_t group);
// Makes or enters a directory's copy; its contents come with its own group child (null when it was not
// listed).
int fop_copy_directory(const fop_item& item, fop_group* child);
// Gives a copied directory its final owner, mode and times.
int fop_copy_directory_end(fop_place* place);

// Contents, owner, mode and times of a regular file, opened as *opened, or not because of open_error.
int fop_copy_regular(fop_item* item, fop_fd* opened, int open_error);
int fop_copy_fifo(fop_item* item);
int fop_copy_link(fop_item* item);

// --- shared by the kinds -------------------------------------------------------------------------------

// Alert "Copy/Move" with "&Continue|&Abort": -1 for Abort, else 1. format takes up to two texts.
int fop_copy_failed(fop_request* request, const char* format, const std::string& first,
                    const char* second = "");
// Asks about a file in the way unless overwriting was allowed: 0 go on, 1 skip, -1 abort.
int fop_ask_overwrite(const fop_item& item);
// Says that what is in the way was put there by this very operation, as it happens where names differ only in
// case, or through a link: 1 skip, -1 abort.
int fop_refuse_made(const fop_item& item);
// Says that the item would be copied onto itself: -1.
int fop_copy_itself();
// After the owner could not be set: 0 when that is passed over, -1 abort.
int fop_owner_failed(const fop_item& item);
// Name and times follow the owner for what is not opened (links, FIFOs). True when the owner is the source's.
bool fop_settle_unopened(const fop_item& item);
// The mode that a copy has while it is made: never wider than the source's for anybody.
mode_t fop_mode_while_written(mode_t source);
// A name for a file that is to replace another once it is complete.
std::string fop_temp_name();
// Keeps a file system's write-back errors in view from before the first write to it.
void fop_note_written_system(fop_request* request, dev_t device, int fd);
