#include "core/ui/signals.h"

#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QSocketNotifier>

namespace {

int sSignalFd = -1;
SignalCalls sCalls;

void read_signals() {
  struct signalfd_siginfo info;
  bool refresh = false, terminate = false;
  while (read(sSignalFd, &info, sizeof info) == sizeof info) {
    if (info.ssi_signo == SIGWINCH)
      refresh = true;
    else
      terminate = true;
  }
  if (terminate) return sCalls.terminate();
  if (refresh) sCalls.refresh();
}

}  // namespace

void signals_hold() {
  sigset_t set;
  sigemptyset(&set);
  for (int number : {SIGTERM, SIGHUP, SIGINT, SIGQUIT, SIGWINCH}) sigaddset(&set, number);
  pthread_sigmask(SIG_BLOCK, &set, nullptr);
  sSignalFd = signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
  signal(SIGCHLD, SIG_IGN);
}

void signals_attach(SignalCalls calls) {
  sCalls = std::move(calls);
  if (sSignalFd < 0) return;
  auto* notifier = new QSocketNotifier(sSignalFd, QSocketNotifier::Read, qApp);
  QObject::connect(notifier, &QSocketNotifier::activated, qApp, read_signals);
}
