#include "fileops/ui/edit_menu.h"

#include "fileops/ui/clipboard.h"
#include "tests/face/window_test.h"

namespace {

class EditMenu : public WindowTest {};

TEST_F(EditMenu, DeleteAsksAsTheSettingsSay) {
  const std::string one = "Do you wish to delete 'a%1'?\n", dir = "Do you wish to delete 'd'?\n",
                    many = "Do you wish to delete these 2 files?\n";
  const std::tuple<uint32_t, Texts, std::string, const char*> rows[] = {
      {SET_RM1_PROMPT, {"a%1"}, one, "b:b d/ "},
      {SET_RM_PROMPT, {"a%1"}, "", "b:b d/ "},
      {SET_RM_PROMPT, {"d"}, dir, "a%1:a%1 b:b "},
      {SET_RM1_PROMPT, {"d"}, dir, "a%1:a%1 b:b "},
      {0, {"d"}, "", "a%1:a%1 b:b "},
      {SET_RM_PROMPT, {"a%1", "d"}, many, "b:b "},
      {SET_RM1_PROMPT, {"a%1", "b"}, "", "d/ "}};
  const uint32_t prompts = SET_RM1_PROMPT | SET_RM1_PROMPT_NOWR | SET_RM1_NO_PROMPT | SET_RM_PROMPT |
                           SET_RM_NO_PROMPT | SET_RM_I_PROMPT;
  for (const auto& [flags, selection, question, left] : rows) {
    gConfig->flags = (gConfig->flags & ~prompts) | flags;
    show({"a%1", "b", "d/"}, selection);
    if (!question.empty()) {
      expect_message(question, "Esc");
      em_delete();
      EXPECT_EQ(slot_running(), 0) << "cancelled";
      expect_message(question);
    }
    em_delete();
    EXPECT_EQ(held(), left);
  }
}

TEST_F(EditMenu, CutThenPasteMovesEveryItemOutOfTheCutList) {
  show({"a", "b", "d/", "to/"}, {"a", "d"});
  em_cut();
  em_paste();
  EXPECT_EQ(slot_running(), 0) << "pasting where it came from does nothing";
  fl_newpath((dir_ / "to").c_str());
  em_paste();
  EXPECT_EQ(held(), "b:b to/ to/a:a to/d/ ");
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
  EXPECT_EQ(held(), "here/ here/1:x/1 here/2:y/2 x/ x/1:x/1 y/ y/2:y/2 ");
}

}  // namespace
