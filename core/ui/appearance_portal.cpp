#include "core/ui/appearance_portal.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QTimer>

#include "core/toolkit/appearance.h"
#include "core/ui/file_manager1.h"

namespace {

constexpr char16_t kPortalName[] = u"org.freedesktop.portal.Desktop",
                   kPortalPath[] = u"/org/freedesktop/portal/desktop",
                   kPortalSettings[] = u"org.freedesktop.portal.Settings",
                   kAppearance[] = u"org.freedesktop.appearance";

QString portal_text(const char16_t* text) {
  return QString::fromUtf16(text);
}

class AppearancePortal : public QObject {
  Q_OBJECT

 public:
  explicit AppearancePortal(QObject* parent) : QObject(parent) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.connect(portal_text(kPortalName), portal_text(kPortalPath), portal_text(kPortalSettings),
                QStringLiteral("SettingChanged"), this, SLOT(changed(QString, QString, QDBusVariant)));
    for (const char* key : {"color-scheme", "contrast"}) ask(QLatin1String(key));
  }

 private Q_SLOTS:
  void changed(const QString& group, const QString& key, const QDBusVariant& value) {
    if (group == portal_text(kAppearance)) take(key, value.variant());
  }

 private:
  void ask(const QString& key) {
    QDBusMessage call = QDBusMessage::createMethodCall(portal_text(kPortalName), portal_text(kPortalPath),
                                                       portal_text(kPortalSettings), QStringLiteral("Read"));
    call.setAutoStartService(false);
    call << portal_text(kAppearance) << key;
    auto* answer = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, key, answer] {
      const QDBusPendingReply<QDBusVariant> reply = *answer;
      if (!reply.isError()) take(key, reply.value().variant());
      answer->deleteLater();
    });
  }

  // The value may stand in one more wrapping.
  void take(const QString& key, QVariant value) {
    if (value.canConvert<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
    if (key == QLatin1String("color-scheme")) dark_ = value.toUInt() == 1;
    if (key == QLatin1String("contrast")) contrast_ = value.toUInt() == 1;
    const Shade shade = contrast_ ? (dark_ ? Shade::contrast_dark : Shade::contrast_light)
                                  : (dark_ ? Shade::dark : Shade::standard);
    if (shade != shown_) appearance_set_shade(shown_ = shade);
  }

  bool dark_ = false, contrast_ = false;
  Shade shown_ = Shade::standard;
};

}  // namespace

void appearance_portal_follow() {
  if (appearance_decided() || !session_bus_runs()) return;
  QTimer::singleShot(200, qApp, [] { new AppearancePortal(qApp); });
}

#include "appearance_portal.moc"
