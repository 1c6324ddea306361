#include "views/row_text.h"

#include "dirmodel/dir_record.h"
#include "dirmodel/id_names.h"
#include "dirmodel/text.h"
#include "views/fname.h"

static std::string permission_text(mode_t mode) {
  std::string text = "--- --- ---";
  for (int part = 1; part <= 3; ++part) dir_get_permissions(mode, &text[(part - 1) * 4], part);
  return text;
}

std::string fl_column_text(const DirEntry& entry, int column) {
  char id_name[16] = "";
  std::string date;
  switch (column) {
    case 0:
      return fname_decode(entry.name);
    case 1:
      return cvt2c(static_cast<uint64_t>(entry.st.st_size));
    case 2:
      es_generate_time_string(&date, entry.st.st_mtime, 2);
      return date;
    case 3:
      dir_get_username(entry.st.st_uid, id_name);
      return id_name;
    case 4:
      dir_get_groupname(entry.st.st_gid, id_name);
      return id_name;
    case 5:
      return permission_text(entry.st.st_mode);
    case 6:
      return (entry.flags & ENTRY_INFO) && entry.info ? fname_decode(entry.info) : "";
    default:
      return "";
  }
}

std::string fl_row_text(const DirEntry& entry) {
  std::string text = fl_column_text(entry, 0);
  const int last = entry.flags & ENTRY_INFO ? 6 : 5;
  for (int column = 1; column <= last; ++column) text += "\t" + fl_column_text(entry, column);
  return text;
}
