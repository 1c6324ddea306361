// File lists as the desktop carries them: on the clipboard and in drags.
#pragma once

#include <QMimeData>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "fileops/transfer.h"

// Our own types, one for each of the two clipboard entries and one for drags.
inline constexpr char kMimeFiles[] = "application/x-zan-files";
inline constexpr char kMimeMoveFiles[] = "application/x-zan-mvfiles";
inline constexpr char kMimeDrag[] = "application/x-zan-transfiles";

enum class FilesUse { copied, cut, dragged };

// A transfer list that can forget names at once, shared by whoever shows or offers it.
class SharedFiles {
 public:
  explicit SharedFiles(TransferList list);
  SharedFiles(const SharedFiles&) = delete;
  SharedFiles& operator=(const SharedFiles&) = delete;

  const TransferList& list() const { return list_; }  // forgotten names are empty
  size_t left() const { return left_; }               // names not empty
  bool has(const char* dir, const char* name) const;
  // Blanks the names that are in the list. Returns how many were.
  size_t forget(const std::string& dir, const std::vector<std::string>& names);

 private:
  using Index = std::unordered_map<std::string_view, size_t>;
  Index& index() const;

  TransferList list_;
  mutable Index index_;  // of the names left, which it only views; made when it is first needed
  mutable bool indexed_ = false;
  mutable size_t left_ = 0;
};

// What the files offer in one use: our own type first, then the forms that other programs read. Each is made
// when it is asked for. With no name left only our own type is offered, empty.
class FilesMime : public QMimeData {
 public:
  FilesMime(std::shared_ptr<SharedFiles> files, FilesUse use);

  const std::shared_ptr<SharedFiles>& files() const { return files_; }
  FilesUse use() const { return use_; }
  QStringList formats() const override;

 protected:
  QVariant retrieveData(const QString& type, QMetaType preferred) const override;

 private:
  std::shared_ptr<SharedFiles> files_;
  FilesUse use_;
};

// Files that another side offers, in any form that is understood: one list a directory, each with at least
// one name and none empty. No lists when no files are offered.
struct OfferedFiles {
  bool cut = false;
  std::vector<TransferList> lists;
};
OfferedFiles files_mime_read(const QMimeData& mime);

// Whether files_mime_read is likely to find any, by the types alone.
bool files_mime_offers(const QMimeData& mime);

// The list under our own type kMimeMoveFiles; null when there is none, or none left in it.
std::shared_ptr<SharedFiles> files_mime_read_cut(const QMimeData& mime);
