// Asks for a shorter name, for a file system that refused a long one.
#pragma once

#include <QDialog>
#include <functional>
#include <memory>

namespace Ui {
class long_filename_dlg;
}

constexpr size_t LONG_FILENAME_MOST = 47;  // bytes of the name as it is on disk

// Its state is its own: several workers may each have one open.
class LongFilenameDialog : public QDialog {
 public:
  // Both names as they are shown. The proposal is cut to LONG_FILENAME_MOST bytes, at a whole character; an
  // emptied field stands for it. answered is called once: with the chosen name for "Rename", or with null for
  // "Skip" and for everything else that closes it.
  LongFilenameDialog(const QString& oldfile, const QString& proposal,
                     std::function<void(const QString* newfile)> answered);
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
  QString newfile_;
  bool do_rename_ = false;
  std::function<void(const QString*)> answered_;
};
