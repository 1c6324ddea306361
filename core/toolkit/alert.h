// The window of a question: a message and any number of buttons.
#pragma once

#include <QDialog>
#include <functional>
#include <memory>
#include <vector>

#include "core/button_list.h"

class QPushButton;
namespace Ui {
class alert;
}

// From now on, alerts know whether the user is just typing into another window. Once, at the start.
void alert_watch_typing();

// Shows a question's window in its place: over owner (null: on the middle of the screen), beside others that
// stand there. One that is not modal is not blocked by a modal one that is open.
void alert_open(QDialog* window, QWidget* owner, Qt::WindowModality modality);

// Answers once, whatever ends it: a button, its letter (with or without Alt), Enter, Escape, closing, or its
// destruction (the escape button). It deletes itself after the answer.
class AlertWindow : public QDialog {
 public:
  AlertWindow(const QString& title, const QString& message, const ButtonList& buttons,
              std::function<void(int)> answered);
  ~AlertWindow() override;
  void open_over(QWidget* owner, Qt::WindowModality modality);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void done(int result) override;

 private:
  void fit_message(const QString& message);
  void add_buttons();
  void answer(int number);

  std::unique_ptr<Ui::alert> ui_;
  ButtonList list_;
  std::vector<QPushButton*> buttons_;
  std::function<void(int)> answered_;
};
