// The properties of the selected entries: what the dialog shows, and applying what was changed.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

struct DirRecord;

// One entry as it was recorded when the dialog opened. The list may be read anew meanwhile.
struct PropertyEntry {
  std::string name;  // as on disk
  mode_t mode = 0;   // 0: its status could not be read
  uid_t uid = 0;
  gid_t gid = 0;
};

// Texts are UTF-8 for display. An empty size, modified or link has its caption dimmed.
struct PropertyRecord {
  int32_t one_entry = -1;  // index in the list of the one entry; -1: several
  std::string dir;         // the directory shown, as on disk
  std::vector<PropertyEntry> entries;
  std::string name;     // the name, or the list of names
  std::string comment;  // summary of several entries
  std::string size, modified, location, link;
  std::string owner, group;  // empty: not the same for all, or unknown
  mode_t mode = 0;           // the bits that all have
};

struct PropertyChange {
  std::string name;          // typed; empty: no renaming
  std::string owner, group;  // typed; empty: keep each entry's own
  mode_t mode = 0;           // the eleven bits 06777 to set
};

// Collects the selected entries of dir in list order. False when there are none.
bool prop_gather(const DirRecord& dir, PropertyRecord* record);

// Applies a change to entry i of the record: name, owner and group, permissions, up to the first error. The
// message to show, or an empty text. A rename that worked stays, and is told to the record and to gDir.
std::string prop_apply(PropertyRecord* record, size_t i, const PropertyChange& change);
