#include "commands/properties.h"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>

#include "commands/typed_name.h"
#include "dirmodel/dir_read.h"
#include "dirmodel/dir_record.h"
#include "dirmodel/text.h"
#include "views/fname.h"

namespace {

constexpr int64_t NONE_SEEN = -2, MIXED = -1;
constexpr size_t NAME_LIST_LIMIT = 252;
constexpr mode_t SET_BITS = S_ISUID | S_ISGID | 0777;

std::string displayed(const std::string& name) {
  return fname_decode(name.c_str());
}

std::string owner_name(int64_t uid) {
  char name[16] = "";
  if (uid >= 0) dir_get_username(static_cast<uid_t>(uid), name);
  return name;
}

std::string group_name(int64_t gid) {
  char name[16] = "";
  if (gid >= 0) dir_get_groupname(static_cast<gid_t>(gid), name);
  return name;
}

int64_t signed_id(uint32_t id) {
  return id == UINT32_MAX ? MIXED : static_cast<int64_t>(id);
}

void merge_id(int64_t* common, uint32_t id) {
  if (*common == NONE_SEEN) *common = signed_id(id);
  if (*common != signed_id(id)) *common = MIXED;
}

std::string long_date(time_t t) {
  struct tm local;
  char text[128] = "";
  if (localtime_r(&t, &local)) strftime(text, sizeof text, "%A %B %d, %Y", &local);
  return text;
}

// The target of a link, once it was read: the same member holds the texts of failures.
std::string link_target(const DirEntry& entry) {
  if (!(entry.flags & ENTRY_INFO) || !entry.info) return "";
  const std::string info(entry.info, strnlen(entry.info, 1024));
  const bool dangling = S_ISLNK(entry.st.st_mode) && info != "(unable to read link info)";
  return !(entry.flags & ENTRY_UNREAD) || dangling ? displayed(info) : "";
}

std::string total_size(uint64_t total) {
  if (total == 0) return "";
  if (total <= INT32_MAX) return es_generate_byte_string(static_cast<int32_t>(total));
  constexpr uint64_t unit = 1024000000;
  return std::to_string(total / unit) + "." + std::to_string(total % unit) + "GB";
}

void describe_one(const DirEntry& entry, PropertyRecord* record) {
  record->name = displayed(entry.name);
  record->size = cvt2c(entry.st.st_size);
  record->modified = long_date(entry.st.st_mtime);
  record->link = link_target(entry);
  record->owner = owner_name(signed_id(entry.st.st_uid));
  record->group = group_name(signed_id(entry.st.st_gid));
  record->mode = entry.st.st_mode;
}

std::string summary(int directories, int files) {
  if (files == 0) return text_format("(%d directories)", directories);
  if (directories == 0) return text_format("(%d files)", files);
  return text_format("(%d items: %d director%s, %d file%s)", directories + files, directories,
                     directories == 1 ? "y" : "ies", files, files == 1 ? "" : "s");
}

// Names joined by ", " up to the bound; *room is what is left of it, 0 once a name did not fit.
void add_to_name_list(const std::string& name, size_t* room, std::string* list) {
  if (name.size() + 2 > *room) {
    *room = 0;
    return;
  }
  *room -= name.size() + 2;
  if (!list->empty()) *list += ", ";
  *list += name;
}

void describe_several(const std::vector<const DirEntry*>& selected, PropertyRecord* record) {
  int directories = 0, files = 0;
  uint64_t total = 0;
  size_t room = NAME_LIST_LIMIT;
  int64_t uid = NONE_SEEN, gid = NONE_SEEN;
  mode_t common = 0xfffff;
  for (const DirEntry* entry : selected) {
    if (dir_entry_is_directory(*entry)) {
      directories++;
    } else {
      files++;
      total += entry->st.st_size;
    }
    add_to_name_list(displayed(entry->name), &room, &record->name);
    merge_id(&uid, entry->st.st_uid);
    merge_id(&gid, entry->st.st_gid);
    // An entry whose status could not be read must not take every bit from all the others.
    if (entry->st.st_mode != 0) common &= entry->st.st_mode;
  }
  record->comment = summary(directories, files);
  record->size = total_size(total);
  record->owner = owner_name(uid);
  record->group = group_name(gid);
  record->mode = common == 0xfffff ? 0 : common;
}

// --- applying --------------------------------------------------------------------------------------------

int rename_without_replacing(const std::string& from, const std::string& to) {
  if (access(to.c_str(), F_OK) == 0) return EEXIST;
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return errno;
  // A file system that cannot refuse by itself: a dangling link in the way is all that is left to see.
  struct stat64 status;
  if (lstat64(to.c_str(), &status) == 0) return EEXIST;
  return rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

void tell_new_name(const std::string& dir, PropertyEntry* entry, const std::string& name) {
  for (int32_t i = 0; gDir.path == dir && i < gDir.count; i++) {
    DirEntry* listed = gDir.entries[i];
    if (entry->name != listed->name) continue;
    snprintf(listed->name, sizeof listed->name, "%s", name.c_str());
    break;
  }
  entry->name = name;
}

std::string apply_name(const std::string& dir, PropertyEntry* entry, const std::string& typed) {
  std::string name, message;
  if (!typed_name_encode(typed, &name, &message)) return message;
  if (name.empty() || name == entry->name) return "";
  const std::string from = typed_name_below(dir, entry->name), to = typed_name_below(dir, name);
  switch (bounded_errno(to, [from, to] { return rename_without_replacing(from, to); })) {
    case 0:
      tell_new_name(dir, entry, name);
      return "";
    case EEXIST:
      return text_format("File name '%s' already exists", typed.c_str());
    default:
      return text_format("Unable to rename '%s'.", typed.c_str());
  }
}

// The user and group databases may be far away, too.
template <class Record>
bool look_up(int (*get)(const char*, Record*, char*, size_t, Record**), uint32_t Record::*member,
             const std::string& name, uint32_t* id) {
  const auto found = std::make_shared<uint32_t>(0);
  const int error = bounded_errno({}, [=] {
    std::vector<char> buffer(1024);
    Record record, *result = nullptr;
    int status;
    while ((status = get(name.c_str(), &record, buffer.data(), buffer.size(), &result)) == ERANGE &&
           buffer.size() < (16u << 20)) {
      buffer.resize(buffer.size() * 2);
    }
    if (!result) return status ? status : ENOENT;
    *found = result->*member;
    return 0;
  });
  if (error == 0) *id = *found;
  return error == 0;
}

bool number_id(const std::string& text, uint32_t* id) {
  if (text.empty() || !misc_all_digits(text.c_str())) return false;
  errno = 0;
  const unsigned long value = strtoul(text.c_str(), nullptr, 10);
  if (errno == ERANGE || value >= UINT32_MAX) return false;  // the last one means "no change" to chown
  *id = static_cast<uint32_t>(value);
  return true;
}

std::string apply_owner(const std::string& path, const PropertyEntry& entry, const PropertyChange& change,
                        bool* changed) {
  uid_t uid = entry.uid;
  gid_t gid = entry.gid;
  if (!change.owner.empty() && !look_up(getpwnam_r, &passwd::pw_uid, change.owner, &uid) &&
      !number_id(change.owner, &uid)) {
    return text_format("Invalid owner_id '%s'", change.owner.c_str());
  }
  if (!change.group.empty() && !look_up(getgrnam_r, &group::gr_gid, change.group, &gid) &&
      !number_id(change.group, &gid)) {
    return text_format("Invalid group '%s'", change.group.c_str());
  }
  if (uid == entry.uid && gid == entry.gid) return "";
  if (bounded_errno(path, [=] { return chown(path.c_str(), uid, gid) == 0 ? 0 : errno; }) != 0) {
    return text_format("Unable to change ownership of '%s'", displayed(entry.name).c_str());
  }
  *changed = true;
  return "";
}

std::string apply_mode(const std::string& path, const PropertyEntry& entry, mode_t bits, bool owner_changed) {
  const mode_t mode = (entry.mode & ~07777u) | (bits & SET_BITS);
  // A change of owner drops the set-id bits, so that they have to be set once more.
  if (mode == entry.mode && !(owner_changed && (mode & (S_ISUID | S_ISGID)))) return "";
  if (bounded_errno(path, [=] { return chmod(path.c_str(), mode & 07777u) == 0 ? 0 : errno; }) != 0) {
    return text_format("Unable to change permissions of '%s'", displayed(entry.name).c_str());
  }
  return "";
}

}  // namespace

bool prop_gather(const DirRecord& dir, PropertyRecord* record) {
  *record = PropertyRecord();
  std::vector<const DirEntry*> selected;
  for (int32_t i = 0; i < dir.count; i++) {
    const DirEntry* entry = dir.entries[i];
    if (!(entry->flags & ENTRY_SELECTED)) continue;
    if (selected.empty()) record->one_entry = i;
    selected.push_back(entry);
    record->entries.push_back({entry->name, entry->st.st_mode, entry->st.st_uid, entry->st.st_gid});
  }
  if (selected.empty()) return false;
  record->dir = dir.path;
  record->location = displayed(dir.path);
  if (selected.size() == 1) {
    describe_one(*selected[0], record);
  } else {
    record->one_entry = -1;
    describe_several(selected, record);
  }
  return true;
}

std::string prop_apply(PropertyRecord* record, size_t i, const PropertyChange& change) {
  PropertyEntry* entry = &record->entries[i];
  if (!change.name.empty()) {
    const std::string message = apply_name(record->dir, entry, change.name);
    if (!message.empty()) return message;
  }
  const std::string path = typed_name_below(record->dir, entry->name);
  bool owner_changed = false;
  const std::string message = apply_owner(path, *entry, change, &owner_changed);
  return !message.empty() ? message : apply_mode(path, *entry, change.mode, owner_changed);
}
