#include "commands/new_item.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "commands/typed_name.h"

int32_t gNew_op = 1;

namespace {

constexpr size_t LONGEST_NAME = 254;

// Exclusive: whatever appears at that name between the test and the creation stays as it is.
int create_file(const std::string& path) {
  const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0664);
  if (fd < 0) return errno;
  close(fd);
  return 0;
}

int create_item(bool file, const std::string& path) {
  if (access(path.c_str(), F_OK) == 0) return EEXIST;
  if (file) return create_file(path);
  return mkdir(path.c_str(), 0755) == 0 ? 0 : errno;
}

}  // namespace

NewItemResult new_item_create(int32_t kind, const std::string& dir, const std::string& typed) {
  NewItemResult result;
  std::string name;
  if (typed.empty() || !typed_name_encode(typed, &name, &result.message)) return result;
  if (name.size() > LONGEST_NAME) {
    result.message = "Name too long!";
    return result;
  }
  const bool file = kind == 1;
  const std::string path = typed_name_below(dir, name);
  const int error = bounded_errno(path, [=] { return create_item(file, path); });
  if (error == EEXIST) {
    result.message = text_format("File or directory '%s' already exists", typed.c_str());
    return result;
  }
  result.created = error == 0;
  if (error != 0 && file) result.message = text_format("Unable to create file '%s'\n", typed.c_str());
  if (error != 0 && !file) result.message = text_format("Unable to create directory '%s'", typed.c_str());
  // The list is read again after a file even when it could not be made: what stands in its way then shows.
  if (result.created || file) result.name = name;
  return result;
}
