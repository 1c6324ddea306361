#include <unistd.h>

#include <QApplication>
#include <QStyle>
#include <cstdio>

#include "core/command_line.h"
#include "core/toolkit/appearance.h"
#include "core/toolkit/icons.h"
#include "core/toolkit/style.h"
#include "core/ui/signals.h"
#include "core/ui/startup.h"
#include "platform/host.h"

// A display that cannot be reached is a plain failure, not a crash with a core file. What the toolkit merely
// warns of is told only then, or to who asks for its messages.
static void report_fatal(QtMsgType type, const QMessageLogContext&, const QString& message) {
  static QByteArray warnings;
  const QByteArray line = "ZAN error: " + message.toLocal8Bit() + '\n';
  if (type == QtWarningMsg && warnings.size() < 4096) warnings += line;
  if (type == QtCriticalMsg || (type != QtFatalMsg && qEnvironmentVariableIsSet("QT_LOGGING_RULES")))
    std::fputs(line.constData(), stderr);
  if (type != QtFatalMsg) return;
  std::fputs((warnings + line).constData(), stderr);
  _exit(1);
}

int main(int argc, char** argv) {
  host_fill_standard_descriptors();
  setpgid(0, 0);  // what it starts can be signalled together with it
  const CommandLine line = command_line_parse(argc, argv);
  if (line.bad) {
    std::fputs(command_line_usage(), stderr);
    return 2;
  }
  if (line.help || line.version) {
    std::fputs(line.help ? command_line_help() : command_line_version(), stdout);
    return 0;
  }
  signals_hold();
  startup_choose_display(line);
  qInstallMessageHandler(report_fatal);
  int own_argc = 1;  // the toolkit parses nothing of the command line
  QApplication application(own_argc, argv);
  QApplication::setStyle(new ZanStyle(QApplication::style()->name()));
  QApplication::setApplicationName(QStringLiteral("zan"));
  QApplication::setApplicationDisplayName(QString());
  appearance_setup();
  QApplication::setWindowIcon(icon_get("zan"));
  QApplication::setDesktopFileName(QStringLiteral("zan"));
  QApplication::setQuitOnLastWindowClosed(false);
  const int status = startup_run(argc, argv, line);
  // The toolkit's Wayland client, when it is taken down, now and then waits for ever for a thread of its own.
  // All is kept by now, and the compositor takes the windows as the process goes; on X the clipboard is
  // handed over below.
  if (QGuiApplication::platformName().startsWith(QLatin1String("wayland"))) _exit(status);
  return status;
}
