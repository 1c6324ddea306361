#include "fileops/ui/edit_menu.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDialog>
#include <QTimer>

#include "core/settings.h"
#include "fileops/ui/clipboard.h"
#include "fileops/ui/slots.h"
#include "tests/face/shown_window.h"
#include "views/ui/navigation.h"

namespace {
bool operations_ended() {
  return QTest::qWaitFor([] { return slot_running() == 0; }, 30000);
}

// Runs em_delete, pressing the key in the question. What the question said; empty when there was none.
std::string asked_by_delete(Qt::Key answer) {
  std::string said;
  QTimer watch;
  QObject::connect(&watch, &QTimer::timeout, [&] {
    auto* alert = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (!alert) return;
    watch.stop();
    for (const QLabel* label : alert->findChildren<QLabel*>()) said += label->text().toStdString();
    QTest::keyClick(alert, answer);
  });
  watch.start(10);
  em_delete();
  return said;
}
}  // namespace

TEST(EditMenu, DeleteAsksAsTheSettingsSay) {
  const std::string one = "Do you wish to delete 'a%1'?", dir = "Do you wish to delete 'd'?",
                    many = "Do you wish to delete these 2 files?";
  const struct {
    uint32_t flags;
    std::vector<std::string> selection;
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
  for (const auto& row : rows) {
    ShownWindow window({"a%1", "b", "d/"});
    const uint32_t kept = SET_RM1_PROMPT | SET_RM1_PROMPT_NOWR | SET_RM1_NO_PROMPT | SET_RM_PROMPT |
                          SET_RM_NO_PROMPT | SET_RM_I_PROMPT;
    gConfig->flags = (gConfig->flags & ~kept) | row.flags;
    window.select(row.selection);
    if (!row.question.empty()) {
      EXPECT_NE(asked_by_delete(Qt::Key_Escape).find(row.question), std::string::npos) << row.question;
      EXPECT_EQ(slot_running(), 0) << "cancelled";
    }
    EXPECT_EQ(asked_by_delete(Qt::Key_Return).empty(), row.question.empty());
    ASSERT_TRUE(operations_ended());
    for (const std::string& name : row.selection) EXPECT_FALSE(path_exists(window / name)) << name;
    EXPECT_EQ(path_exists(window / "b"), row.selection.back() != "b");
  }
}

TEST(EditMenu, CutThenPasteMovesEveryItemOutOfTheCutList) {
  ShownWindow window({"a", "b", "d/", "to/"});
  window.select({"a", "d"});
  em_cut();
  em_paste();
  EXPECT_EQ(slot_running(), 0) << "pasting where it came from does nothing";
  fl_newpath((window / "to").c_str());
  em_paste();
  ASSERT_TRUE(operations_ended());
  EXPECT_TRUE(path_exists(window / "to/a") && path_exists(window / "to/d"));
  EXPECT_FALSE(path_exists(window / "a") || path_exists(window / "d"));
  EXPECT_EQ(em_check_clipboard_for_type(-1, nullptr), 0);
  em_paste();
  EXPECT_EQ(slot_running(), 0);
}

TEST(EditMenu, PasteOfFilesOfSeveralDirectoriesIsOneOperationEach) {
  ShownWindow window({"x/", "y/", "x/1", "y/2", "here/"});
  auto* mime = new QMimeData;
  const std::string uris = "copy\nfile://" + (window / "x/1") + "\nfile://" + (window / "y/2") + "\nfile://" +
                           (window / "here/none");
  mime->setData(QStringLiteral("x-special/gnome-copied-files"), QByteArray::fromStdString(uris));
  QApplication::clipboard()->setMimeData(mime);
  fl_newpath((window / "here").c_str());
  em_paste();
  EXPECT_EQ(slot_running(), 2) << "what is here already is not pasted";
  ASSERT_TRUE(operations_ended());
  EXPECT_EQ(read_file(window / "here/1") + read_file(window / "here/2"), "x/1y/2");
}

TEST(EditMenu, SelectionCommandsGiveTheListTheFocus) {
  ShownWindow window({"a", "b", "d/"});
  const auto run = [&window](void (*command)()) {
    base_find_widget("tb_curpath")->setFocus();
    command();
    EXPECT_TRUE(window.list()->hasFocus());
    return window.selected();
  };
  EXPECT_EQ(run(em_select_all), "a b d ");
  EXPECT_EQ(gDir.sel_dir_count, 1);
  EXPECT_EQ(run(em_unselect_all), "");
  window.select({"b"});
  EXPECT_EQ(run(em_invert_selection), "a d ");
  EXPECT_NE(window.status("status1").find("2 selected items"), std::string::npos);
}
