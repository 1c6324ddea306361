#include "fileops/fop_copy_data.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "fileops/fop_progress.h"
#include "views/fname.h"

// What the kernel copies between two looks at pause and cancel.
static constexpr int64_t kStride = 1 << 20;
static constexpr int64_t kToTheEnd = INT64_MAX;

namespace {
enum class Data { more, end, skip, abort };

int result_of(Data data) {
  return data == Data::skip ? 1 : data == Data::abort ? -1 : 0;
}

Data read_failed(const fop_content& content, const char* error) {
  const std::string shown = fname_decode(content.source.c_str());
  const int answer = fop_alert(content.request, "Copy/Move", "&Continue|&Abort", "Error reading '%s'\n%s\n",
                               shown.c_str(), error);
  return answer == 2 ? Data::abort : Data::skip;
}

// The whole file was accounted when it was begun; what is not copied yet is taken back out.
void show_copied(const fop_content& content) {
  fop_request* request = content.request;
  fop_show_progress(request, request->done_bytes - content.accounted + content.copied, request->total_bytes);
}

Data write_failed(const fop_content& content) {
  return fop_write_failed(content.request, content.dest) < 0 ? Data::abort : Data::skip;
}

// No space: more to try the same write again.
Data no_space(const fop_content& content) {
  const int error = errno;
  const std::string shown = fname_decode(content.dest.c_str());
  const int answer = fop_alert(content.request, "Write error", "&Retry|&Skip|&Abort",
                               "Unable to write '%s'\nNo space left on device\n", shown.c_str());
  if (answer == 1) return Data::more;
  if (answer == 3) return content.request->control->cancel = 1, Data::abort;
  errno = error;
  return write_failed(content);
}

Data write_buffer(fop_content* content, size_t count) {
  size_t written = 0;
  while (written < count) {
    if (fop_cancelled(content->request)) return Data::abort;
    const ssize_t n = write(content->out, content->request->buf + written, count - written);
    if (n > 0) {
      written += n;
      continue;
    }
    if (n == 0 || errno == EINTR) continue;
    const Data answer = errno == ENOSPC ? no_space(*content) : write_failed(*content);
    if (answer != Data::more) return answer;
  }
  content->copied += static_cast<int64_t>(count);
  show_copied(*content);
  return Data::more;
}

// An older content goes only when the new one is at hand.
Data make_room(fop_content* content) {
  if (*content->touched || !content->in_place) return Data::more;
  *content->touched = true;
  return ftruncate(content->out, 0) == 0 ? Data::more : write_failed(*content);
}

// Through the buffer, up to the offset end or the source's own.
Data copy_buffered(fop_content* content, int64_t end) {
  while (content->copied < end) {
    if (fop_cancelled(content->request)) return Data::abort;
    const int64_t want = std::min<int64_t>(content->request->bufsize, end - content->copied);
    const ssize_t n = read(content->in, content->request->buf, want);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) return read_failed(*content, strerror(errno));
    if (n == 0) return Data::end;
    if (const Data made = make_room(content); made != Data::more) return made;
    if (const Data wrote = write_buffer(content, n); wrote != Data::more) return wrote;
    if (content->copied == content->status.st_size)
      return Data::end;  // so it seems: the size is looked at again
  }
  return Data::more;
}

// Whole strides by the kernel, as far as it goes; any trouble is left to the buffer, which knows how to ask.
Data copy_strides(fop_content* content, int64_t end) {
  const int64_t known_end = std::min<int64_t>(end, content->status.st_size);
  while (content->copied < known_end) {
    if (fop_cancelled(content->request)) return Data::abort;
    const int64_t want = std::min(kStride, known_end - content->copied);
    const ssize_t n = copy_file_range(content->in, nullptr, content->out, nullptr, want, 0);
    if (n <= 0) break;
    content->copied += n;
    show_copied(*content);
  }
  return Data::more;
}

Data copy_until(fop_content* content, int64_t end) {
  const bool small =
      content->status.st_size - content->copied <= static_cast<int64_t>(content->request->bufsize);
  if (!small && !content->in_place) {
    const Data strides = copy_strides(content, end);
    if (strides != Data::more) return strides;
  }
  return copy_buffered(content, end);
}

Data at_offset(fop_content* content, off_t offset) {
  if (lseek(content->in, offset, SEEK_SET) < 0) return read_failed(*content, strerror(errno));
  if (lseek(content->out, offset, SEEK_SET) < 0) return write_failed(*content);
  content->copied = offset;
  return Data::more;
}

// Nothing but a hole is left: the copy gets its length.
Data end_in_hole(fop_content* content) {
  struct stat now;
  if (fstat(content->in, &now) != 0) return read_failed(*content, strerror(errno));
  if (now.st_size <= content->copied) return Data::end;
  while (ftruncate(content->out, now.st_size) != 0) {
    if (errno == EINTR) continue;
    const Data answer = errno == ENOSPC ? no_space(*content) : write_failed(*content);
    if (answer != Data::more) return answer;
  }
  content->copied = now.st_size;
  return Data::end;
}

// Data from one hole to the next, holes left out.
Data copy_sparse(fop_content* content) {
  if (const Data made = make_room(content); made != Data::more) return made;
  for (;;) {
    const off_t data = lseek(content->in, content->copied, SEEK_DATA);
    if (data < 0 && errno == ENXIO) return end_in_hole(content);
    const off_t start = data < 0 ? content->copied : data;
    const off_t hole = data < 0 ? -1 : lseek(content->in, data, SEEK_HOLE);
    if (const Data sought = at_offset(content, start); sought != Data::more) return sought;
    const Data copied = copy_until(content, hole < 0 ? kToTheEnd : hole);
    if (copied != Data::more) return copied;
  }
}

// Compares what was copied with what the source now holds: end when it is that, more when there is more to
// read. A source that never told its size is taken as read.
Data compare_size(fop_content* content, int64_t copied_before, int* empty_reads) {
  constexpr int kEmptyReads = 3;
  struct stat now;
  if (fstat(content->in, &now) != 0) return read_failed(*content, strerror(errno));
  const bool told = now.st_size != content->status.st_size || content->copied <= now.st_size;
  if (content->copied == now.st_size || !told) return Data::end;
  *empty_reads = content->copied > copied_before ? 0 : *empty_reads + 1;
  if (content->copied > now.st_size || *empty_reads == kEmptyReads)
    return read_failed(*content, "Its size has changed");
  content->status.st_size = now.st_size;
  content->status.st_blocks = now.st_blocks;
  return Data::more;
}
}  // namespace

int fop_write_failed(fop_request* request, const std::string& dest) {
  const std::string error = strerror(errno), shown = fname_decode(dest.c_str());
  const int answer = fop_alert(request, "Copy/Move", "&Continue|&Abort", "Error writing '%s'\n%s\n",
                               shown.c_str(), error.c_str());
  return answer == 2 ? -1 : 1;
}

int fop_copy_content(fop_content* content) {
  int empty_reads = 0;
  for (;;) {
    const struct stat& status = content->status;
    const int64_t before = content->copied;
    const bool sparse = status.st_size > 0 && status.st_blocks < status.st_size / 512;
    Data data = sparse ? copy_sparse(content) : copy_until(content, kToTheEnd);
    if (data == Data::more || data == Data::end) data = make_room(content);  // of an empty source
    if (data == Data::more) data = compare_size(content, before, &empty_reads);
    if (data != Data::more) return result_of(data);
  }
}
