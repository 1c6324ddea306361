#include "fileops/ui/slots.h"

#include <QApplication>
#include <QCloseEvent>
#include <QElapsedTimer>
#include <QScreen>
#include <QScrollBar>
#include <QStyle>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <cerrno>

#include "core/state.h"
#include "core/toolkit/dialogs.h"
#include "core/toolkit/timers.h"
#include "core/ui/exit.h"
#include "fileops/ui/slot_row.h"
#include "fileops/ui/slots_running.h"
#include "platform/desktop.h"
#include "platform/host.h"
#include "ui_slots_holder.h"

namespace {
constexpr int sSweepMs = 100, sHungAfterMs = 10000;
constexpr int sMostWidth = 1200, sBottomMargin = 50, sScrollBarWidth = 15;

// Closing it does not end the operations: it goes to the task bar, and comes back with the next one.
class SlotsHolder : public QWidget {
 public:
  SlotsHolder() {
    ui.setupUi(this);
    setAttribute(Qt::WA_ShowWithoutActivating);  // the user goes on in the window that started the operation
    setAttribute(Qt::WA_QuitOnClose, false);
    timer.setObjectName(QStringLiteral("slot_delete_timer"));
  }
  Ui::slots_holder_window ui;
  QTimer timer;
  int most_height = 0;

 protected:
  void closeEvent(QCloseEvent* event) override {
    event->ignore();
    showMinimized();
  }
};

SlotsHolder* sHolder = nullptr;
std::vector<SlotRow*> sSlots;  // newest first
QSize sSlotSize;               // that of the first slot ever made
bool sTerminating = false;

SlotRow* slot_find(void* container, size_t* index = nullptr) {
  for (size_t i = 0; i < sSlots.size(); ++i)
    if (sSlots[i] == container) {
      if (index != nullptr) *index = i;
      return sSlots[i];
    }
  return nullptr;
}

void resize_base() {
  const int height = sSlotSize.height() * static_cast<int>(sSlots.size());
  const bool scrolls = height > sHolder->most_height;
  const int bar = std::max(sScrollBarWidth, sHolder->style()->pixelMetric(QStyle::PM_ScrollBarExtent));
  const QSize size(sSlotSize.width() + (scrolls ? bar : 0), std::min(height, sHolder->most_height));
  sHolder->resize(size.boundedTo(dialog_room(sHolder)));
}

// Every running instance refreshes its views: the operation has changed directories.
void signal_instances() {
  // Not where the window is: a shell looks at its directory first, and that may hang.
  spawnvpe("/bin/sh", {"sh", "-c", "procsig -f -s SIGWINCH zan >/dev/null 2>&1"}, "/");
}

// Whether the window was closed and nothing but cancelled operations has run for so long that they must hang.
bool only_hung_ones_left() {
  static QElapsedTimer since;
  const auto cancelled = [](const SlotRow* row) { return !row->control() || row->control()->cancel; };
  const bool only = base_window_closed && std::all_of(sSlots.begin(), sSlots.end(), cancelled);
  if (!only) since.invalidate();
  if (only && !since.isValid()) since.start();
  return only && slot_running() > 0 && since.hasExpired(sHungAfterMs);
}

void slot_timer(QTimer*) {
  bool swept = false;
  for (size_t i = 0; i < sSlots.size();) {
    if (!sSlots[i]->removed) {
      ++i;
      continue;
    }
    sSlots[i]->removed = false;
    slot_remove(sSlots[i]);
    swept = true;
  }
  if (swept) signal_instances();
  if (only_hung_ones_left()) return program_end();
  if (swept && base_window_closed && slot_running() == 0) program_end();
}

void make_holder() {
  sHolder = new SlotsHolder;
  const QRect visible = QGuiApplication::primaryScreen()->availableGeometry();
  sHolder->most_height = visible.height() - sBottomMargin;
  wtimer_attach(&sHolder->timer, sSweepMs, slot_timer);
}

// The keyboard walks the rows from top to bottom, whichever was made first.
void order_stops() {
  for (size_t i = 0; i + 1 < sSlots.size(); ++i) {
    QWidget::setTabOrder(sSlots[i]->first_stop(), sSlots[i]->last_stop());
    QWidget::setTabOrder(sSlots[i]->last_stop(), sSlots[i + 1]->first_stop());
  }
}
}  // namespace

fop_info* slot_add(int kind, const std::string& source_dir, const std::vector<std::string>& names,
                   const std::string& destination) {
  if (sTerminating) return errno = ECANCELED, nullptr;
  if (sHolder == nullptr) make_holder();
  if (sSlots.size() >= SLOT_MOST) return errno = ENOMEM, nullptr;
  auto* row = new SlotRow(kind, source_dir, names, destination);
  row->info.control = std::make_shared<fop_control>();
  row->bind(row->info.control);
  if (!sSlotSize.isValid()) sSlotSize = QSize(row->sizeHint().width(), row->height());
  const int whole_rows = std::max(1, sHolder->most_height / sSlotSize.height());
  sHolder->most_height = whole_rows * sSlotSize.height();
  sHolder->setMaximumSize(sMostWidth, sHolder->most_height);
  sHolder->ui.slots_holder->verticalScrollBar()->setSingleStep(sSlotSize.height());
  sHolder->ui.slots_rows_layout->insertWidget(0, row);
  sSlots.insert(sSlots.begin(), row);
  slots_running_add(row, row->info.control);
  order_stops();
  resize_base();
  if (!sHolder->isVisible()) sHolder->show();
  return &row->info;
}

void slot_start_failed(void* container) {
  slots_running_end(container);
  if (SlotRow* row = slot_find(container)) row->bind(nullptr);
}

int slot_mark_removed(void* container) {
  size_t index = 0;
  if (SlotRow* row = slot_find(container, &index)) row->removed = true;
  return static_cast<int>(index);
}

int slot_remove(void* container) {
  size_t index = 0;
  SlotRow* row = slot_find(container, &index);
  if (row == nullptr) return -1;
  sSlots.erase(sSlots.begin() + static_cast<std::ptrdiff_t>(index));
  sHolder->ui.slots_rows_layout->removeWidget(row);
  row->hide();
  row->deleteLater();
  if (!sSlots.empty()) return resize_base(), 0;
  wtimer_detach(&sHolder->timer);
  sHolder->hide();
  sHolder->deleteLater();  // its timer may be what calls
  sHolder = nullptr;
  return 0;
}

int slot_running() {
  return static_cast<int>(std::count_if(sSlots.begin(), sSlots.end(),
                                        [](const SlotRow* row) { return row->control() != nullptr; }));
}

void slot_terminate_all() {
  if (slot_running() == 0) return program_end();
  base_window_closed = 1;
  sTerminating = true;
  for (SlotRow* row : sSlots)
    if (row->control()) row->control()->cancel = 1;
  desk_end();
}

void slot_show(const fop_info& info) {
  if (SlotRow* row = slot_find(info.slot)) row->show_info(info);
}
