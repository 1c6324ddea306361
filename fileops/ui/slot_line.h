// One line of a slot: a label such as "From: " and a path.
#pragma once

#include <QLabel>

// The labels stand right-aligned in a column of fixed width, so that the paths of all lines begin at one
// place. A path wider than the line is cut in its middle. The text is the whole line.
class SlotLine : public QLabel {
 public:
  explicit SlotLine(QWidget* parent = nullptr);
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
};
