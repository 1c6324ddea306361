// What this process put on the clipboard it keeps as SharedFiles, offered by a FilesMime: forgetting cut
// items changes them in place, and is told to the desktop a little later, once for many. What another
// instance or program put there is read once and kept until the desktop says that the clipboard changed; it
// is written only to forget items of another instance's cut, and only after reading it afresh.
#include "fileops/ui/clipboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QTimer>
#include <cstring>
#include <optional>

namespace {
constexpr int kTellAgainMs = 300;

std::shared_ptr<SharedFiles> _cut_files;

// What was read from a clipboard that is not ours.
struct ForeignClipboard {
  std::optional<OfferedFiles> files;
  std::optional<std::shared_ptr<SharedFiles>> cut;
};
ForeignClipboard sForeign;

QClipboard* clip_board() {
  static bool connected = false;
  QClipboard* board = QGuiApplication::clipboard();
  if (!connected) {
    connected = true;
    QObject::connect(board, &QClipboard::dataChanged, board, [] { sForeign = {}; });
  }
  return board;
}

// Our own offer when it is still what the clipboard holds.
const FilesMime* our_offer() {
  return dynamic_cast<const FilesMime*>(clip_board()->mimeData());
}

const OfferedFiles& foreign_files() {
  if (!sForeign.files) {
    const QMimeData* mime = clip_board()->mimeData();
    OfferedFiles read = mime ? files_mime_read(*mime) : OfferedFiles();
    sForeign.files = std::move(read);
  }
  return *sForeign.files;
}

std::shared_ptr<SharedFiles> foreign_cut_files() {
  if (!sForeign.cut) {
    const QMimeData* mime = clip_board()->mimeData();
    std::shared_ptr<SharedFiles> read = mime ? files_mime_read_cut(*mime) : nullptr;
    sForeign.cut = std::move(read);
  }
  return *sForeign.cut;
}

void clip_offer(std::shared_ptr<SharedFiles> files, FilesUse use) {
  clip_board()->setMimeData(new FilesMime(std::move(files), use));
  sForeign = {};
}

// Tells the desktop that the cut list on our clipboard has shrunk: at once when nothing is left of it, so
// that nobody pastes what is gone, else after a while, so that a long move is not told file by file.
void tell_of_shrunk_cut(const std::shared_ptr<SharedFiles>& files) {
  static QTimer* timer = nullptr;
  if (files->left() == 0) {
    clip_offer(files, FilesUse::cut);
    return;
  }
  if (!timer) {
    timer = new QTimer(qApp);
    timer->setSingleShot(true);
    QObject::connect(timer, &QObject::destroyed, [] { timer = nullptr; });
    QObject::connect(timer, &QTimer::timeout, [] {
      const FilesMime* ours = our_offer();
      if (ours && ours->use() == FilesUse::cut) clip_offer(ours->files(), FilesUse::cut);
    });
  }
  if (!timer->isActive()) timer->start(kTellAgainMs);
}
}  // namespace

void clipboard_put(TransferList list, bool cut) {
  auto files = std::make_shared<SharedFiles>(std::move(list));
  clip_offer(std::move(files), cut ? FilesUse::cut : FilesUse::copied);
}

OfferedFiles clipboard_get() {
  const QMimeData* mime = clip_board()->mimeData();
  return mime ? files_mime_read(*mime) : OfferedFiles();
}

int em_check_clipboard_for_type(int, const char* type) {
  bool cut = false, any = false;
  if (const FilesMime* ours = our_offer()) {
    any = ours->files()->left() > 0;
    cut = ours->use() == FilesUse::cut;
  } else {
    any = !foreign_files().lists.empty();
    cut = foreign_files().cut;
  }
  if (!any) return 0;
  return !type || std::strcmp(type, cut ? kClipMoveFiles : kClipFiles) == 0;
}

void file_get_cut_files() {
  const FilesMime* ours = our_offer();
  _cut_files = ours ? ours->files() : foreign_cut_files();
  if (_cut_files && ((ours && ours->use() != FilesUse::cut) || _cut_files->left() == 0)) _cut_files.reset();
}

bool file_has_cut_files() {
  return _cut_files != nullptr;
}

int file_is_cut(const char* dir, const char* name) {
  return _cut_files && _cut_files->has(dir, name);
}

int file_uncut(const std::string& dir, const std::vector<std::string>& names) {
  if (!_cut_files) return 0;
  const bool ours_shown = our_offer() && our_offer()->files() == _cut_files;
  if (_cut_files->forget(dir, names) == 0) return 0;
  if (ours_shown) {
    tell_of_shrunk_cut(_cut_files);
    return 1;
  }
  if (our_offer()) return 1;  // the user has cut or copied something else here
  const QMimeData* mime = clip_board()->mimeData();
  std::shared_ptr<SharedFiles> standing = mime ? files_mime_read_cut(*mime) : nullptr;
  if (!standing || standing->forget(dir, names) == 0) return 1;
  _cut_files = standing;
  clip_offer(standing, FilesUse::cut);
  return 1;
}

int file_uncut(const char* dir, const char* name) {
  return file_uncut(std::string(dir), std::vector<std::string>{name});
}
