#include "fileops/ui/clipboard.h"

#include <QSignalSpy>

#include "fileops/transfer_codec.h"
#include "fileops/uri_list.h"
#include "tests/face/window_test.h"

namespace {
class Clipboard : public testing::Test {
 protected:
  using Entries = std::vector<std::pair<const char*, std::string>>;
  static QClipboard* board() { return QGuiApplication::clipboard(); }
  static std::string clip_data(const char* type) {
    return board()->mimeData()->data(QString::fromLatin1(type)).toStdString();
  }
  // What a program of another kind, or another instance, puts there.
  static void put_foreign(const Entries& entries) {
    auto* mime = new QMimeData;
    for (const auto& [type, bytes] : entries)
      mime->setData(QString::fromLatin1(type), QByteArray::fromStdString(bytes));
    board()->setMimeData(mime);
  }

  // Puts a cut list of files "0", "1", ... in /d there, and takes it over.
  static TransferList cut_numbered(int count) {
    TransferList list{"/d", {}, false};
    for (int i = 0; i < count; ++i) list.names.push_back(std::to_string(i));
    clipboard_put(list, true);
    file_get_cut_files();
    return list;
  }

  // Waits until the desktop has been told of a list that has shrunk.
  static bool told() {
    return wait_for([] {
      const auto timers = qApp->findChildren<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
      return std::none_of(timers.begin(), timers.end(), std::mem_fn(&QTimer::isActive));
    });
  }

  static std::string described(const OfferedFiles& files) {
    std::string text = files.cut ? "cut" : "copy";
    for (const TransferList& list : files.lists) {
      text += " " + list.dir + ":";
      for (const std::string& name : list.names) text += name + ",";
    }
    return text;
  }
};
}  // namespace

TEST_F(Clipboard, OffersOurOwnFormFirstAndWhatOthersRead) {
  for (const std::string use : {"copy", "cut"}) {
    const bool cut = use == "cut";
    clipboard_put({"/d", {"a b", "c"}, false}, cut);
    EXPECT_EQ(board()->mimeData()->formats().first(), QString::fromLatin1(cut ? kMimeMoveFiles : kMimeFiles));
    EXPECT_FALSE(board()->mimeData()->hasFormat(QString::fromLatin1(cut ? kMimeFiles : kMimeMoveFiles)));
    EXPECT_EQ(described(clipboard_get()), use + " /d:a b,c,");
    EXPECT_EQ(clip_data(kMimeUriList), "file:///d/a%20b\r\nfile:///d/c\r\n");
    EXPECT_EQ(clip_data(kMimeGnomeFiles), use + "\nfile:///d/a%20b\nfile:///d/c");
    EXPECT_EQ(clip_data(kMimeKdeCut), cut ? "1" : "0");
    EXPECT_EQ(board()->text(), QStringLiteral("/d/a b\n/d/c"));
    EXPECT_EQ(em_check_clipboard_for_type(-1, kClipMoveFiles), cut);
    EXPECT_EQ(em_check_clipboard_for_type(-1, kClipFiles), !cut);
  }
}

TEST_F(Clipboard, ReadsInTheOrderOwnGnomeUriList) {
  const std::string own = transfer_pack({"/own", {"o", ""}, false}), uris = "file:///u/1\r\nfile:///v/2\r\n";
  const std::pair<Entries, std::string> rows[] = {
      {{{kMimeUriList, uris}, {kMimeGnomeFiles, "cut\nfile:///g/1"}, {kMimeFiles, own}}, "copy /own:o,"},
      {{{kMimeMoveFiles, own}}, "cut /own:o,"},
      {{{kMimeUriList, uris}, {kMimeGnomeFiles, "cut\nfile:///g/1"}}, "cut /g:1,"},
      {{{kMimeUriList, uris}, {kMimeGnomeFiles, "nonsense"}}, "copy /u:1, /v:2,"},
      {{{kMimeUriList, uris}, {kMimeKdeCut, "1"}}, "cut /u:1, /v:2,"},
      {{{kMimeUriList, uris}, {kMimeKdeCut, "0"}}, "copy /u:1, /v:2,"},
      {{{kMimeUriList, uris}, {kMimeFiles, own + "x"}, {kMimeMoveFiles, ""}}, "copy /u:1, /v:2,"},
      {{{kMimeUriList, "http://x/\r\n"}, {kMimeKdeCut, "1"}}, "copy"},
      {{{kMimePlainText, "/a/b"}}, "copy"}};
  for (const auto& [entries, read] : rows) {
    put_foreign(entries);
    EXPECT_EQ(described(clipboard_get()), read);
    EXPECT_EQ(em_check_clipboard_for_type(-1, nullptr), read != "copy") << read;
  }
}

// Ours, or the cut of another instance.
TEST_F(Clipboard, MovedItemsAreForgottenAndTheLastOneEmptiesIt) {
  for (const bool foreign : {false, true}) {
    const TransferList list = cut_numbered(4);
    if (foreign) put_foreign({{kMimeMoveFiles, transfer_pack(list)}});
    file_get_cut_files();
    EXPECT_EQ(file_uncut("/e", "1") + file_uncut("/d", "9"), 0);
    EXPECT_EQ(file_uncut("/d", {"1", "2"}), 1);
    EXPECT_EQ(file_uncut("/d", "1"), 0);
    EXPECT_TRUE(file_is_cut("/d", "3") && !file_is_cut("/d", "1"));
    TransferList left;
    ASSERT_TRUE(transfer_unpack(clip_data(kMimeMoveFiles), &left));
    EXPECT_EQ(left.names, (Texts{"0", "", "", "3"}));
    EXPECT_EQ(clip_data(kMimeUriList), "file:///d/0\r\nfile:///d/3\r\n");
    EXPECT_EQ(file_uncut("/d", {"0", "3"}), 1);
    EXPECT_EQ(clip_data(kMimeMoveFiles), "");
    EXPECT_EQ(board()->mimeData()->formats().size(), 1);
    EXPECT_EQ(em_check_clipboard_for_type(-1, nullptr), 0);
  }
}

// Others read the clipboard when they are told that it changed: they must be told, but not for each file.
TEST_F(Clipboard, TheDesktopIsToldOfALongMoveNowAndThen) {
  cut_numbered(1000);
  const QSignalSpy times(board(), &QClipboard::dataChanged);
  for (int i = 0; i < 500; ++i) file_uncut("/d", std::to_string(i).c_str());
  EXPECT_EQ(times.size(), 0);
  EXPECT_TRUE(told());
  EXPECT_EQ(times.size(), 1);
}

TEST_F(Clipboard, WhatSomebodyElsePutThereSinceIsNeverOverwritten) {
  const Entries rows = {{kMimePlainText, "words"},
                        {kMimeGnomeFiles, "cut\nfile:///d/0"},
                        {kMimeMoveFiles, transfer_pack({"/other", {"0"}, false})},
                        {kMimeFiles, transfer_pack({"/d", {"0", "1", "2"}, false})}};
  for (const auto& entry : rows) {
    for (const char* last : {"0", "2"}) {
      cut_numbered(3);
      file_uncut("/d", "1");
      put_foreign({entry});
      const QMimeData* standing = board()->mimeData();
      EXPECT_EQ(file_uncut("/d", last), 1);
      EXPECT_FALSE(file_is_cut("/d", last));
      EXPECT_TRUE(told());
      EXPECT_EQ(board()->mimeData(), standing);
      EXPECT_EQ(clip_data(entry.first), entry.second);
    }
  }
}
