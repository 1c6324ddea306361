#include "core/button_list.h"

#include <gtest/gtest.h>

TEST(ButtonList, MarksDefaultAndEscape) {
  const struct {
    const char* text;
    size_t count;
    int default_button, escape_button;
    const char* first;
  } rows[] = {{"&Skip|&Overwrite|Overwrite &All|a&Bort", 4, 1, 4, "&Skip"},
              {"@&Skip|&Delete|de&Lete all|#&Abort", 4, 1, 4, "&Skip"},
              {"#&No,@&Yes", 2, 2, 1, "&No"},
              {"|&One||&Two|", 2, 1, 2, "&One"},
              {"&Go|#@&Stop|&Wait", 3, 2, 2, "&Go"},
              {"@#&Stop|&Go", 2, 1, 1, "&Stop"},
              {"@|#|,", 1, 1, 1, "&Close"}};
  for (const auto& row : rows) {
    const ButtonList list = button_list_parse(row.text);
    EXPECT_EQ(list.labels.size(), row.count) << row.text;
    EXPECT_EQ(list.default_button, row.default_button) << row.text;
    EXPECT_EQ(list.escape_button, row.escape_button) << row.text;
    EXPECT_EQ(list.labels.front(), row.first) << row.text;
  }
}
