// SPDX-License-Identifier: GPL-3.0-or-later
// The least that a status-bar program of this toolkit can be: an application object, a connection to the bus
// and a name there. Given another program's name and its menu's path, it keeps that menu and answers with it.
#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>

namespace {

class KeptMenu final : public QDBusVirtualObject {
public:
    explicit KeptMenu(const QVariantList& layout)
        : m_layout(layout) {}

    QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.member() == QLatin1String("GetLayout"))
            return connection.send(message.createReply(m_layout));
        return connection.send(message.createReply(false));
    }

private:
    QVariantList m_layout;
};

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    auto bus = QDBusConnection::sessionBus();
    if (argc == 3) {
        auto question = QDBusMessage::createMethodCall(
            QString::fromLocal8Bit(argv[1]), QString::fromLocal8Bit(argv[2]),
            QStringLiteral("com.canonical.dbusmenu"), QStringLiteral("GetLayout"));
        question << 0 << -1 << QStringList();
        bus.registerVirtualObject(QStringLiteral("/Menu"), new KeptMenu(bus.call(question).arguments()));
    }
    bus.registerService(QStringLiteral("be.zofra.Floor"));
    return QApplication::exec();
}
