#include "fileops/alloc_list.h"

#include <cstdlib>

static constexpr int32_t kAllocStep = 1024;

alloc_list* alloc_start() {
  auto* list = static_cast<alloc_list*>(std::malloc(sizeof(alloc_list)));
  if (!list) return nullptr;
  *list = {0, kAllocStep, static_cast<void**>(std::calloc(kAllocStep, sizeof(void*)))};
  if (!list->items) {
    std::free(list);
    return nullptr;
  }
  return list;
}

void* alloc_add(alloc_list* list, void* block) {
  if (!list || !block) return nullptr;
  if (list->count == list->capacity) {
    if (list->capacity > INT32_MAX - kAllocStep) return nullptr;
    const size_t size = (static_cast<size_t>(list->capacity) + kAllocStep) * sizeof(void*);
    void* grown = std::realloc(list->items, size);
    if (!grown) return nullptr;
    list->items = static_cast<void**>(grown);
    list->capacity += kAllocStep;
  }
  return list->items[list->count++] = block;
}

void* alloc_realloc(alloc_list* list, void* block, size_t size) {
  if (!list || !block) return nullptr;
  for (int32_t i = 0; i < list->count; ++i) {
    if (list->items[i] != block) continue;
    void* resized = std::realloc(block, size);
    if (resized) list->items[i] = resized;
    return resized;
  }
  return alloc_add(list, block);
}

void alloc_free(alloc_list* list) {
  if (!list) return;
  for (int32_t i = 0; i < list->count; ++i) std::free(list->items[i]);
  std::free(list->items);
  std::free(list);
}
