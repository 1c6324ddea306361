// One slot: the row of a running operation in the window of file operations.
#pragma once

#include <QFrame>
#include <QPointer>
#include <memory>
#include <string>
#include <vector>

#include "fileops/fop.h"

namespace Ui {
class slot;
}

class SlotRow : public QFrame {
 public:
  SlotRow(int kind, const std::string& source_dir, const std::vector<std::string>& names,
          const std::string& destination);
  ~SlotRow() override;

  // Draws the record.
  void show_info(const fop_info& info);
  // Binds the buttons to the operation; null unbinds them.
  void bind(std::shared_ptr<fop_control> control);
  const std::shared_ptr<fop_control>& control() const { return control_; }
  // First and last of the widgets that take the keyboard.
  QWidget* first_stop() const;
  QWidget* last_stop() const;

  fop_info info;         // the record of the operation that is started here
  bool removed = false;  // its operation has ended: the next sweep takes it away

 private:
  void slot_pause_cb();
  void slot_cancel_cb();
  void cancel_answered(int button);
  void describe(int kind, const std::string& source_dir, const std::vector<std::string>& names,
                const std::string& destination);

  std::unique_ptr<Ui::slot> ui_;
  std::shared_ptr<fop_control> control_;
  QPointer<QWidget> question_;
};
