// Asks for a shorter name, for a file system that refused a long one.
#pragma once

#include <QDialog>
#include <functional>
#include <memory>
#include <string>

namespace Ui {
class long_filename_dlg;
}

constexpr int LONG_FILENAME_MOST = 47;  // bytes

// name, cut to LONG_FILENAME_MOST bytes at a whole character. Bytes that are no UTF-8 count as one each.
std::string long_filename_cut(const std::string& name);

// Its state is its own: several workers may each have one open.
class LongFilenameDialog : public QDialog {
 public:
  // proposal is what the field starts with, and what an emptied field stands for. answered is called once:
  // with the chosen name for "Rename", or with null for "Skip" and for everything else that closes it.
  LongFilenameDialog(const std::string& oldfile, const std::string& proposal,
                     std::function<void(const std::string* newfile)> answered);
  ~LongFilenameDialog() override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void done(int result) override;

 private:
  void long_filename_setup();
  void long_filename_rename();
  void limit_bytes();
  void answer();

  std::unique_ptr<Ui::long_filename_dlg> ui_;
  std::string oldfile_, newfile_;
  QString proposal_shown_;
  bool do_rename_ = false;
  std::function<void(const std::string*)> answered_;
};
