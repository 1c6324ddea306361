// Names of user and group ids, from two caches that live as long as the program.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <memory>

struct IdNameRecord {
  uint32_t id;
  char name[16];
};
static_assert(sizeof(IdNameRecord) == 20);

// A ring: when it is full, a new record takes the oldest one's place.
struct IdNameCache {
  std::unique_ptr<IdNameRecord[]> records;
  int count = 0;     // filled, at most capacity
  int head = 0;      // the newest
  int capacity = 0;  // records
};

IdNameCache x_new_cache(int n);
// Copies the name of id to out (at least 16 bytes). Its length, 0 when it is not in the cache.
size_t x_get_record(uint32_t id, char* out, const IdNameCache& cache);
// Adds a record in front, the name cut to 15 bytes. The stored name.
const char* x_add_record(uint32_t id, const char* name, IdNameCache* cache);

// The name for an id, at most 15 bytes, from a cache; decimal when unknown. out holds at least 16 bytes.
// A name that is not in the cache yet is asked for from the system, which may take long: the thread that
// reads a directory does that ahead for every id it meets. Any thread.
void dir_get_username(uid_t uid, char* out);
void dir_get_groupname(gid_t gid, char* out);

// Puts the decimal text in the cache for an id whose name cannot be had in time.
void dir_give_up_name(uint32_t id, bool group);
