#include "core/ui/file_manager1.h"

#include <QApplication>
#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QFileInfo>
#include <QMainWindow>
#include <QStringList>
#include <QTimer>
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "commands/ui/property_dlg.h"
#include "core/command.h"
#include "core/toolkit/message.h"
#include "dirmodel/dir_record.h"
#include "dirmodel/fs_probe.h"
#include "fileops/uri_list.h"
#include "platform/host.h"
#include "views/find.h"
#include "views/ui/base.h"
#include "views/ui/file_list.h"
#include "views/ui/navigation.h"

namespace {

constexpr char kShow[] = "ZAN_SHOW";
constexpr char kActivated[] = "ZAN_ACTIVATED";
constexpr int kMostWindows = 20;      // what one call may open
constexpr size_t kMostTold = 100000;  // bytes of names for a new window: the system passes on 128 KiB

// A window that the bus started has nothing of its own to show: the first call may have it.
bool sUnclaimed = false;

std::vector<TransferList> lists_of(const QStringList& uris) {
  return uri_list_decode(uris.join(QStringLiteral("\r\n")).toStdString());
}

bool window_is_free() {
  return base_window() && !base_window()->property("busy").toBool() && !QApplication::activeModalWidget() &&
         !QApplication::activePopupWidget();
}

void select_items(const std::vector<std::string>& names, bool properties) {
  fl_unselect_all();
  int first = -2;
  for (const std::string& name : names) {
    const int i = find_name(name.c_str());
    if (i < 0) continue;
    if (first < 0) fl_goto_index(first = i);
    fl_select_index(i);
  }
  if (properties && first >= 0) property_dlg_open();
}

// The caller's right to bring a window to the front, handed over to the first window that is shown for it.
class StartupId {
 public:
  explicit StartupId(const QString& id) : id_(id.toUtf8()) {}
  void give(void (*act)(const std::string& dir), const std::string& dir) {
    const char* const names[] = {"DESKTOP_STARTUP_ID", "XDG_ACTIVATION_TOKEN"};
    for (const char* name : names)
      if (!id_.isEmpty()) qputenv(name, id_);
    act(dir);
    for (const char* name : names) qunsetenv(name);
    id_.clear();
  }

 private:
  QByteArray id_;
};

// What is not there, or no longer, is shown by the nearest directory above it.
std::string directory_above(std::string dir) {
  while (dir.size() > 1 && fs_path_is_directory(dir.c_str()) <= 0)
    dir.resize(std::max<size_t>(dir.rfind('/'), 1));
  return dir;
}

// Shows a directory with these of its names selected, here when this window shows it already.
void show(const std::string& wanted, std::vector<std::string> names, bool properties, StartupId* startup) {
  const std::string dir = directory_above(wanted);
  if (dir != wanted) names.clear();  // they were not meant to be looked for there
  const bool here = window_is_free() && gDir.path == dir;
  if (here || (sUnclaimed && window_is_free())) {
    sUnclaimed = false;
    startup->give([](const std::string&) { wfocus(base_window()); }, dir);
    if (here || fl_newpath(dir.c_str()) == 0 || gDir.path == dir) select_items(names, properties);
    return;
  }
  std::string told = properties ? "properties" : "items";
  for (const std::string& name : names) {
    if (told.size() + name.size() > kMostTold) break;
    told += '/' + name;  // the one byte that no name holds
  }
  setenv(kShow, told.c_str(), 1);
  startup->give([](const std::string& path) { misc_spawn(0, host_program(), {path}); }, dir);
  unsetenv(kShow);
}

void show_items(const QStringList& uris, const QString& startup_id, bool properties) {
  StartupId startup(startup_id);
  int windows = 0;
  for (const QString& uri : uris)
    if (uri_names_root(uri.toStdString()) && ++windows == 1) show("/", {}, false, &startup);
  for (const TransferList& list : lists_of(uris))
    if (++windows <= kMostWindows) show(list.dir, list.names, properties, &startup);
}

void show_folders(const QStringList& uris, const QString& startup_id) {
  StartupId startup(startup_id);
  int windows = 0;
  for (const QString& uri : uris) {
    std::string folder = uri_names_root(uri.toStdString()) ? "/" : "";
    for (const TransferList& list : lists_of({uri}))
      folder = (list.dir == "/" ? "" : list.dir) + "/" + list.names.front();
    if (folder.empty()) continue;
    if (++windows > kMostWindows) return;
    show(folder, {}, false, &startup);
  }
}

class FileManager1 : public QDBusAbstractAdaptor {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

 public:
  explicit FileManager1(QObject* parent) : QDBusAbstractAdaptor(parent) {}

 public Q_SLOTS:
  // Answered at once and shown from the event loop: the caller must not wait for a reading.
  Q_NOREPLY void ShowFolders(const QStringList& uris, const QString& id) {
    QTimer::singleShot(0, this, [uris, id] { show_folders(uris, id); });
  }
  Q_NOREPLY void ShowItems(const QStringList& uris, const QString& id) {
    QTimer::singleShot(0, this, [uris, id] { show_items(uris, id, false); });
  }
  Q_NOREPLY void ShowItemProperties(const QStringList& uris, const QString& id) {
    QTimer::singleShot(0, this, [uris, id] { show_items(uris, id, true); });
  }
};

void offer_now() {
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return;
  auto* object = new QObject(qApp);
  new FileManager1(object);
  bus.registerObject(QStringLiteral("/org/freedesktop/FileManager1"), object);
  bus.interface()->registerService(QStringLiteral("org.freedesktop.FileManager1"),
                                   QDBusConnectionInterface::QueueService,
                                   QDBusConnectionInterface::AllowReplacement);
}

}  // namespace

bool session_bus_runs() {
  if (qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS")) return true;
  const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
  return !runtime.isEmpty() && QFileInfo::exists(runtime + QStringLiteral("/bus"));
}

void file_manager1_offer() {
  sUnclaimed = std::getenv(kActivated) != nullptr;
  unsetenv(kActivated);  // what this window starts was not started by the bus
  if (session_bus_runs()) QTimer::singleShot(200, qApp, offer_now);
}

void file_manager1_show_pending() {
  const char* told = std::getenv(kShow);
  if (!told) return;
  std::vector<std::string> words;
  for (const char* at = told;;) {
    const char* end = std::strchr(at, '/');
    words.emplace_back(at, end ? static_cast<size_t>(end - at) : std::strlen(at));
    if (!end) break;
    at = end + 1;
  }
  unsetenv(kShow);
  const bool properties = words.front() == "properties";
  words.erase(words.begin());
  QTimer::singleShot(0, qApp, [words, properties] { select_items(words, properties); });
}

#include "file_manager1.moc"
