#include "fileops/ui/edit_menu.h"

#include "fileops/ui/clipboard.h"
#include "fileops/ui/slots.h"
#include "tests/face/window_test.h"

namespace {

class EditMenu : public WindowTest {};

TEST_F(EditMenu, DeleteAsksAsTheSettingsSay) {
  const std::string one = "Do you wish to delete 'a%1'?\n", dir = "Do you wish to delete 'd'?\n",
                    many = "Do you wish to delete these 2 files?\n";
  const struct {
    uint32_t flags;
    Texts selection;
    std::string question;
  } rows[] = {
      {SET_RM1_PROMPT, {"a%1"}, one},
      {SET_RM_PROMPT, {"a%1"}, ""},
      {SET_RM_PROMPT, {"d"}, dir},
      {SET_RM1_PROMPT, {"d"}, dir},
      {0, {"d"}, ""},
      {SET_RM_PROMPT, {"a%1", "d"}, many},
      {SET_RM1_PROMPT, {"a%1", "b"}, ""},
  };
  const uint32_t prompts = SET_RM1_PROMPT | SET_RM1_PROMPT_NOWR | SET_RM1_NO_PROMPT | SET_RM_PROMPT |
                           SET_RM_NO_PROMPT | SET_RM_I_PROMPT;
  for (const auto& row : rows) {
    gConfig->flags = (gConfig->flags & ~prompts) | row.flags;
    show({"a%1", "b", "d/"}, row.selection);
    if (!row.question.empty()) {
      expect_message(row.question, Qt::Key_Escape);
      em_delete();
      EXPECT_EQ(slot_running(), 0) << "cancelled";
      expect_message(row.question, Qt::Key_Return);
    }
    em_delete();
    ASSERT_TRUE(settled());
    for (const std::string& name : row.selection) EXPECT_FALSE(path_exists(dir_ / name)) << name;
    EXPECT_EQ(path_exists(dir_ / "b"), row.selection.back() != "b");
  }
}

TEST_F(EditMenu, CutThenPasteMovesEveryItemOutOfTheCutList) {
  show({"a", "b", "d/", "to/"}, {"a", "d"});
  em_cut();
  em_paste();
  EXPECT_EQ(slot_running(), 0) << "pasting where it came from does nothing";
  fl_newpath((dir_ / "to").c_str());
  em_paste();
  ASSERT_TRUE(settled());
  EXPECT_TRUE(path_exists(dir_ / "to/a") && path_exists(dir_ / "to/d"));
  EXPECT_FALSE(path_exists(dir_ / "a") || path_exists(dir_ / "d"));
  EXPECT_EQ(em_check_clipboard_for_type(-1, nullptr), 0);
  em_paste();
  EXPECT_EQ(slot_running(), 0);
}

TEST_F(EditMenu, PasteOfFilesOfSeveralDirectoriesIsOneOperationEach) {
  show({"x/", "y/", "x/1", "y/2", "here/"});
  std::string uris = "copy";
  for (const char* name : {"x/1", "y/2", "here/none"}) uris += "\nfile://" + (dir_ / name);
  auto* mime = new QMimeData;
  mime->setData(QStringLiteral("x-special/gnome-copied-files"), QByteArray::fromStdString(uris));
  QApplication::clipboard()->setMimeData(mime);
  fl_newpath((dir_ / "here").c_str());
  em_paste();
  EXPECT_EQ(slot_running(), 2) << "what is here already is not pasted";
  ASSERT_TRUE(settled());
  EXPECT_EQ(read_file(dir_ / "here/1") + read_file(dir_ / "here/2"), "x/1y/2");
  EXPECT_EQ(read_file(dir_ / "x/1") + read_file(dir_ / "y/2"), "x/1y/2");
}

}  // namespace
