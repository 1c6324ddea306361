#include "core/toolkit/dialogs.h"

#include <QDialog>
#include <QScreen>
#include <QTextDocument>

#include "core/toolkit/message.h"

void dialog_open(QWidget* parent, QDialog* dialog) {
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setWindowModality(Qt::WindowModal);
  QSize size = dialog->sizeHint().expandedTo(dialog->minimumSizeHint());
  if (const QScreen* screen = dialog->screen()) {
    const QSize frame(16, 48);  // the window manager's share
    size = size.boundedTo(screen->availableSize() - frame);
  }
  dialog->resize(size);
  wcenter(parent, dialog);
  dialog->show();
}

QString tip_text(const QString& text) {
  return Qt::mightBeRichText(text) ? QLatin1String("<qt>") + text.toHtmlEscaped() : text;
}
