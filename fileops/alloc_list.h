// A registry of malloc'd blocks that belong together and are freed in one sweep.
#pragma once

#include <cstddef>
#include <cstdint>

struct alloc_list {
  int32_t count;     // blocks registered
  int32_t capacity;  // places in items
  void** items;
};

// A new empty list with 1024 places; null when there is no memory.
alloc_list* alloc_start();
// Registers block and returns it; null (and the block stays the caller's) when the list is null, the block is
// null, or the list cannot grow. So registering a fresh copy doubles as the out-of-memory test.
void* alloc_add(alloc_list* list, void* block);
// Resizes a registered block and updates its entry, the first that holds it. Null when that fails: the old
// block stays registered. A block that is not registered is only registered, not resized.
void* alloc_realloc(alloc_list* list, void* block, size_t size);
// Frees every block in the order of registration, then the list. Null is allowed.
void alloc_free(alloc_list* list);
