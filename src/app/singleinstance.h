#pragma once
// One running copy of the program per user and data folder. The first copy holds a lock file and
// listens on a local socket; a later start finds the lock taken, asks the running copy through
// the socket to bring its window to the front, and ends.
#include <QLocalServer>
#include <QLockFile>
#include <QObject>
#include <QString>

class QLocalSocket;

class SingleInstance : public QObject {
    Q_OBJECT
public:
    enum class Role {
        First,        // this copy runs; later starts reach it through activationRequested
        OtherRaised,  // another copy runs and has been asked to come to the front
        OtherSilent,  // another copy holds the lock but does not answer
    };

    // dataFolder: the folder this copy works on; made absolute and clean before it names the copy.
    explicit SingleInstance(const QString& dataFolder, QObject* parent = nullptr);
    ~SingleInstance() override;

    Role role() const { return role_; }
    const QString& serverName() const { return name_; }
    QString lockFilePath() const { return lockPath_; }

signals:
    // A later start asked this (first) copy to show its window.
    void activationRequested();

private:
    bool askRunningCopy();
    void listen();
    void serve(QLocalSocket* socket);

    QString name_;
    QString lockPath_;
    QLockFile lock_;
    QLocalServer server_;
    Role role_ = Role::First;
};
