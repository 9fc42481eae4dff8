#include "app/singleinstance.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QLocalSocket>
#include <QThread>

namespace {

constexpr char kActivate[] = "activate";
constexpr qint64 kLongestMessage = 64;
// A running copy may hold its lock a moment before it listens: ask again for up to two seconds.
constexpr int kAttempts = 20;
constexpr int kPauseMs = 100;
constexpr int kSocketWaitMs = 1000;

// Short and free of path characters, so that it serves as a socket or pipe name everywhere.
QString instanceName(const QString& dataFolder) {
    const QString user = qEnvironmentVariable("USER", qEnvironmentVariable("USERNAME"));
    const QString folder = QDir::cleanPath(QFileInfo(dataFolder).absoluteFilePath());
    const QByteArray key = (user + u'\n' + QDir::homePath() + u'\n' + folder).toUtf8();
    const QByteArray hash = QCryptographicHash::hash(key, QCryptographicHash::Sha256).toHex().left(16);
    return QStringLiteral("pxcallsigns-") + QString::fromLatin1(hash);
}

}  // namespace

SingleInstance::SingleInstance(const QString& dataFolder, QObject* parent)
    : QObject(parent),
      name_(instanceName(dataFolder)),
      lockPath_(QDir::tempPath() + u'/' + name_ + QStringLiteral(".lock")),
      lock_(lockPath_) {
    // The lock is held as long as the copy runs, so its age says nothing: only a lock whose
    // process is gone (a crash, a kill) counts as stale, and QLockFile then takes it over.
    lock_.setStaleLockTime(0);
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        if (lock_.tryLock(0)) {
            listen();
            return;
        }
        // No lock can be had at all (say, a read-only temp folder): run unguarded rather than not at all.
        if (lock_.error() != QLockFile::LockFailedError) return;
        if (askRunningCopy()) {
            role_ = Role::OtherRaised;
            return;
        }
        // Nobody answers. A lock file that QLockFile cannot read (left empty by a crash while it was
        // written) goes; that of a live copy cannot be removed while its copy holds it open.
        lock_.removeStaleLockFile();
        if (attempt + 1 < kAttempts) QThread::msleep(kPauseMs);
    }
    role_ = Role::OtherSilent;
}

SingleInstance::~SingleInstance() { server_.close(); }

bool SingleInstance::askRunningCopy() {
    QLocalSocket socket;
    socket.connectToServer(name_);
    if (!socket.waitForConnected(kSocketWaitMs)) return false;
    socket.write(QByteArray(kActivate) + '\n');
    const bool sent = socket.waitForBytesWritten(kSocketWaitMs);
    socket.disconnectFromServer();
    if (socket.state() != QLocalSocket::UnconnectedState) socket.waitForDisconnected(kSocketWaitMs);
    return sent;
}

void SingleInstance::listen() {
    // A socket left behind by a copy that crashed would make listen() fail; holding the lock,
    // this copy is the only one that may use the name.
    QLocalServer::removeServer(name_);
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    if (!server_.listen(name_)) return;  // the copy runs; later starts then find nobody to raise
    connect(&server_, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* socket = server_.nextPendingConnection()) serve(socket);
    });
}

void SingleInstance::serve(QLocalSocket* socket) {
    connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    const auto read = [this, socket] {
        while (socket->canReadLine())
            if (socket->readLine(kLongestMessage).trimmed() == kActivate) emit activationRequested();
        if (socket->bytesAvailable() > kLongestMessage) socket->abort();  // no message of ours is that long
    };
    connect(socket, &QLocalSocket::readyRead, this, read);
    read();  // what arrived before the connection was taken
}
