// Expanding an item: a scanning thread reads the directory while events run; what it found is then added a
// slice at a time. A directory that gives nothing for ten seconds is left to its thread.
#include <QMainWindow>
#include <QTreeWidget>
#include <algorithm>
#include <chrono>

#include "core/state.h"
#include "core/toolkit/escape_watch.h"
#include "core/toolkit/message.h"
#include "dirmodel/text.h"
#include "fileops/dir_scan.h"
#include "platform/desktop.h"
#include "views/fname.h"
#include "views/ui/base.h"
#include "views/ui/tree_pane_parts.h"

namespace {
constexpr auto STALLED_AFTER = std::chrono::seconds(10);
constexpr size_t ADDED_AT_ONCE = 500;

// The names of the subdirectories, while events run. Empty when it cannot be read, or not in time.
DirNames read_subdirectories(const std::string& path) {
  struct Reading {
    DirNames names;
    bool ended = false;
  };
  const auto reading = std::make_shared<Reading>();
  DirScanCalls calls;
  calls.listed = [reading](const DirNames& names) { reading->names = names; };
  calls.ended = [reading] { reading->ended = true; };
  const unsigned flags = DIR_SCAN_NAMES | DIR_SCAN_UNSORTED | (tree_probe_flags() ? 0U : DIR_SCAN_HIDE_DOT);
  const auto scan = dir_scan_start(path, flags, std::move(calls));
  if (!scan) return {};
  const auto print_progress = [scan] { desk_status(1, std::to_string(scan->read) + " read"); };
  const int timer = desk_timer_start(300, print_progress);
  int seen = -1;
  auto progress = std::chrono::steady_clock::now();
  bool given_up = false;
  const EscapeWatch escape(base_window(), [&given_up] {
    given_up = true;
    desk_wake();
  });
  while (!reading->ended && !given_up && !desk_ended() &&
         std::chrono::steady_clock::now() - progress < STALLED_AFTER) {
    if (scan->read != seen) {
      seen = scan->read;
      progress = std::chrono::steady_clock::now();
    }
    desk_pending_events(50);
  }
  dir_scan_cancel(scan);
  print_progress();
  desk_timer_stop(timer);
  return std::move(reading->names);
}

// Display texts, sorted and without duplicates where the option asks for it.
DirNames display_texts(const DirNames& names, bool sorted) {
  DirNames texts;
  for (const std::string& name : names) texts.emplace_back(fname_decode(name.c_str()));
  if (!sorted) return texts;
  std::sort(texts.begin(), texts.end());
  texts.erase(std::unique(texts.begin(), texts.end()), texts.end());
  return texts;
}

void add_subdirectories(QTreeWidget* tree, const QPersistentModelIndex& index, const DirNames& texts,
                        bool sorted) {
  std::string parent;
  x_get_fullpath(tree->itemFromIndex(index), &parent);
  QList<QTreeWidgetItem*> items;
  for (size_t i = 0; i < texts.size(); ++i) {
    const std::string path = es_construct_fullpath(parent.c_str(), texts[i].c_str());
    const bool encoded = fname_encode(path.c_str()) != nullptr;
    if (encoded || !sorted) items.append(tree_new_item(texts[i], encoded));
    if (i + 1 < texts.size() && items.size() < static_cast<qsizetype>(ADDED_AT_ONCE)) continue;
    QTreeWidgetItem* item = tree->itemFromIndex(index);
    item->setChildIndicatorPolicy(QTreeWidgetItem::ShowIndicator);  // an item without one hides its children
    item->addChildren(items);
    items.clear();
    desk_pending_events();
    // Events may have collapsed the item, or taken it away, or the whole pane.
    if (!index.isValid() || !tree->isExpanded(index)) return;
  }
}
}  // namespace

bool x_tree_expand(QTreeWidget* tree, QTreeWidgetItem* item) {
  std::string path;
  x_get_fullpath(item, &path);
  const char* encoded = fname_encode(path.c_str());
  if (!encoded) {
    wreport(base_window(), "Error", "Unable to translate '%s' into '%s' encoding.", path.c_str(),
            gConfig->encoding);
    return false;
  }
  const QPersistentModelIndex index(tree->indexFromItem(item));
  const bool sorted = gOptions & OPT_TREE_SORTED;
  wblock(base_window(), 1);
  const DirNames texts = display_texts(read_subdirectories(encoded), sorted);
  if (index.isValid() && tree->itemFromIndex(index)->childCount() == 0)
    add_subdirectories(tree, index, texts, sorted);
  wblock(base_window(), 0);
  return true;
}
