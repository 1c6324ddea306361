#include "fileops/ui/files_mime.h"

#include <string_view>

#include "fileops/transfer_codec.h"
#include "fileops/uri_list.h"

namespace {
const char* mime_own_type(FilesUse use) {
  switch (use) {
    case FilesUse::copied:
      return kMimeFiles;
    case FilesUse::cut:
      return kMimeMoveFiles;
    case FilesUse::dragged:
      break;
  }
  return kMimeDrag;
}

QByteArray mime_bytes(const std::string& text) {
  return QByteArray(text.data(), static_cast<qsizetype>(text.size()));
}

std::string_view mime_view(const QByteArray& bytes) {
  return {bytes.constData(), static_cast<size_t>(bytes.size())};
}

// Not asked for by hasFormat first: that lists what the clipboard could be turned into, and has all image
// plug-ins looked through for it, also when nobody has put anything there.
QByteArray mime_offered(const QMimeData& mime, const char* type) {
  return mime.data(QString::fromLatin1(type));
}

TransferList without_empty_names(TransferList list) {
  std::erase_if(list.names, [](const std::string& name) { return name.empty(); });
  return list;
}

bool mime_read_own(const QMimeData& mime, const char* type, OfferedFiles* out) {
  TransferList list;
  if (!transfer_unpack(mime_view(mime_offered(mime, type)), &list)) return false;
  list = without_empty_names(std::move(list));
  if (list.names.empty()) return false;
  out->lists.push_back(std::move(list));
  out->cut = type == kMimeMoveFiles;
  return true;
}
}  // namespace

SharedFiles::SharedFiles(TransferList list) : list_(std::move(list)) {
  for (const std::string& name : list_.names) left_ += !name.empty();
}

SharedFiles::Index& SharedFiles::index() const {
  if (indexed_) return index_;
  indexed_ = true;
  index_.reserve(list_.names.size());
  for (size_t i = 0; i < list_.names.size(); ++i)
    if (!list_.names[i].empty()) index_.emplace(list_.names[i], i);
  left_ = index_.size();  // a name that came twice is forgotten once
  return index_;
}

bool SharedFiles::has(const char* dir, const char* name) const {
  return list_.dir == dir && index().contains(name);
}

size_t SharedFiles::forget(const std::string& dir, const std::vector<std::string>& names) {
  if (dir != list_.dir) return 0;
  size_t forgotten = 0;
  for (const std::string& name : names) {
    const auto found = index().find(name);
    if (found == index().end()) continue;
    std::string& forgotten_name = list_.names[found->second];
    index().erase(found);  // before the text that it views goes away
    forgotten_name.clear();
    ++forgotten;
  }
  left_ -= forgotten;
  return forgotten;
}

FilesMime::FilesMime(std::shared_ptr<SharedFiles> files, FilesUse use)
    : files_(std::move(files)), use_(use) {}

QStringList FilesMime::formats() const {
  QStringList types{QString::fromLatin1(mime_own_type(use_))};
  if (files_->left() == 0) return types;
  types << QString::fromLatin1(kMimeUriList);
  if (use_ != FilesUse::dragged)
    types << QString::fromLatin1(kMimeGnomeFiles) << QString::fromLatin1(kMimeKdeCut);
  types << QString::fromLatin1(kMimePlainText);
  return types;
}

QVariant FilesMime::retrieveData(const QString& type, QMetaType) const {
  const TransferList& list = files_->list();
  const QByteArray name = type.toLatin1();
  const bool cut = use_ == FilesUse::cut;
  if (name == mime_own_type(use_))
    return files_->left() == 0 ? QByteArray() : mime_bytes(transfer_pack(list));
  if (!formats().contains(type)) return {};
  if (name == kMimeUriList) return mime_bytes(uri_list_encode(list));
  if (name == kMimeGnomeFiles) return mime_bytes(gnome_files_encode(list, cut));
  if (name == kMimeKdeCut) return QByteArray(cut ? "1" : "0");
  return mime_bytes(plain_paths_encode(list));
}

OfferedFiles files_mime_read(const QMimeData& mime) {
  OfferedFiles out;
  for (const char* type : {kMimeDrag, kMimeFiles, kMimeMoveFiles})
    if (mime_read_own(mime, type, &out)) return out;
  if (gnome_files_decode(mime_view(mime_offered(mime, kMimeGnomeFiles)), &out.cut, &out.lists)) return out;
  out.lists = uri_list_decode(mime_view(mime_offered(mime, kMimeUriList)));
  out.cut = !out.lists.empty() && kde_cut_decode(mime_view(mime_offered(mime, kMimeKdeCut)));
  return out;
}

bool files_mime_offers(const QMimeData& mime) {
  for (const char* type : {kMimeDrag, kMimeFiles, kMimeMoveFiles, kMimeGnomeFiles, kMimeUriList})
    if (mime.hasFormat(QString::fromLatin1(type))) return true;
  return false;
}

std::shared_ptr<SharedFiles> files_mime_read_cut(const QMimeData& mime) {
  TransferList list;
  if (!transfer_unpack(mime_view(mime_offered(mime, kMimeMoveFiles)), &list)) return nullptr;
  auto files = std::make_shared<SharedFiles>(std::move(list));
  return files->left() == 0 ? nullptr : files;
}
