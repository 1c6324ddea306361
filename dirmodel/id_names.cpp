#include "dirmodel/id_names.h"

#include <grp.h>
#include <pwd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

namespace {
std::mutex sCacheMutex;  // guards both; never held while the system is asked
IdNameCache sUserCache, sGroupCache;

IdNameCache& id_cache(bool group) {
  IdNameCache& cache = group ? sGroupCache : sUserCache;
  if (cache.capacity == 0) cache = x_new_cache(group ? 64 : 256);
  return cache;
}

// Asks the user or group database: lookup is getpwuid_r or getgrgid_r, field the name in its record.
template <class Record>
std::string database_name(int (*lookup)(uint32_t, Record*, char*, size_t, Record**), char* Record::*field,
                          uint32_t id) {
  std::vector<char> space(4096);
  Record record, *found = nullptr;
  int error;
  while ((error = lookup(id, &record, space.data(), space.size(), &found)) == ERANGE &&
         space.size() < 1u << 22)
    space.resize(space.size() * 2);
  return error == 0 && found ? found->*field : std::to_string(id);
}

void name_of_id(uint32_t id, bool group, char* out) {
  {
    std::lock_guard lock(sCacheMutex);
    if (x_get_record(id, out, id_cache(group)) > 0) return;
  }
  const std::string name = group ? database_name<struct group>(getgrgid_r, &group::gr_name, id)
                                 : database_name<struct passwd>(getpwuid_r, &passwd::pw_name, id);
  std::lock_guard lock(sCacheMutex);
  if (x_get_record(id, out, id_cache(group)) > 0) return;  // another thread was quicker
  std::memcpy(out, x_add_record(id, name.c_str(), &id_cache(group)), sizeof IdNameRecord::name);
}
}  // namespace

IdNameCache x_new_cache(int n) {
  IdNameCache cache;
  cache.records = std::make_unique<IdNameRecord[]>(static_cast<size_t>(n));
  cache.capacity = n;
  return cache;
}

size_t x_get_record(uint32_t id, char* out, const IdNameCache& cache) {
  for (int i = 0; i < cache.count; ++i) {
    const IdNameRecord& record = cache.records[(cache.head + i) % cache.capacity];
    if (record.id != id) continue;
    std::memcpy(out, record.name, sizeof record.name);
    return std::strlen(out);
  }
  return 0;
}

const char* x_add_record(uint32_t id, const char* name, IdNameCache* cache) {
  cache->head = (cache->head + cache->capacity - 1) % cache->capacity;
  if (cache->count < cache->capacity) ++cache->count;
  IdNameRecord& record = cache->records[cache->head];
  record.id = id;
  std::snprintf(record.name, sizeof record.name, "%s", name);
  return record.name;
}

void dir_get_username(uid_t uid, char* out) {
  name_of_id(uid, false, out);
}

void dir_get_groupname(gid_t gid, char* out) {
  name_of_id(gid, true, out);
}

void dir_give_up_name(uint32_t id, bool group) {
  char known[16];
  std::lock_guard lock(sCacheMutex);
  if (x_get_record(id, known, id_cache(group)) == 0)
    x_add_record(id, std::to_string(id).c_str(), &id_cache(group));
}
