#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>

#include "fileops/fop_copy.h"
#include "views/fname.h"

// Makes a link or a FIFO by make(directory, name). One in the way is replaced only when the new one stands.
template <typename Make>
static int make_over(const fop_item& item, Make make) {
  if (item.dest_dir == -1) return errno = item.place->dest_error, -1;
  if (make(item.dest_dir, item.dest_name.c_str()) == 0) return 0;
  if (errno != EEXIST) return -1;
  const std::string temp = fop_temp_name();
  if (make(item.dest_dir, temp.c_str()) != 0) return -1;
  if (renameat(item.dest_dir, temp.c_str(), item.dest_dir, item.dest_name.c_str()) == 0) return 0;
  const int error = errno;
  unlinkat(item.dest_dir, temp.c_str(), 0);
  errno = error;
  return -1;
}

static bool dest_status(const fop_item& item, struct stat* status, int flags) {
  return item.dest_dir != -1 && fstatat(item.dest_dir, item.dest_name.c_str(), status, flags) == 0;
}

// What is in the way must not be the source, nor come from this operation. 0, 1 or -1.
static int refuse_in_way(const fop_item& item) {
  struct stat in_way;
  if (!dest_status(item, &in_way, AT_SYMLINK_NOFOLLOW)) return 0;
  if (fop_identity_of(in_way) == fop_identity_of(item.status)) return fop_copy_itself();
  return fop_made(*item.request(), in_way, item.dest) ? fop_refuse_made(item) : 0;
}

int fop_copy_fifo(fop_item* item) {
  struct stat in_way;
  if (const int refused = refuse_in_way(*item); refused != 0) return refused;
  if (dest_status(*item, &in_way, 0) && !S_ISFIFO(in_way.st_mode))
    return fop_copy_failed(item->request(), "The '%s' is not a FIFO\n", item->dest);
  const mode_t mode = item->status.st_mode & 0777;
  const int made = make_over(*item, [mode](int dir, const char* name) { return mkfifoat(dir, name, mode); });
  if (made != 0) return fop_copy_failed(item->request(), "Unable to make '%s' FIFO\n", item->dest);
  return fop_settle_unopened(*item) ? 0 : fop_owner_failed(*item);
}

int fop_copy_link(fop_item* item) {
  struct stat in_way;
  if (const int refused = refuse_in_way(*item); refused != 0) return refused;
  std::string target(PATH_MAX, '\0');
  const ssize_t length = readlinkat(item->place->source.get(), item->name, target.data(), target.size());
  if (length < 0 || length == PATH_MAX)
    return fop_copy_failed(item->request(), "Unable to read link '%s'\n", item->source);
  target.resize(length);
  // A link takes another link's place without a word, as it always did; a file is asked about.
  if (dest_status(*item, &in_way, AT_SYMLINK_NOFOLLOW) && !S_ISLNK(in_way.st_mode)) {
    const int answer = fop_ask_overwrite(*item);
    if (answer != 0) return answer;
  }
  const int made =
      make_over(*item, [&target](int dir, const char* name) { return symlinkat(target.c_str(), dir, name); });
  if (made != 0) {
    const std::string shown = fname_decode(target.c_str());
    return fop_copy_failed(item->request(), "Unable to create symbolic link '%s' to\n'%s'\n", item->dest,
                           shown.c_str());
  }
  return fop_settle_unopened(*item) ? 0 : fop_owner_failed(*item);
}
