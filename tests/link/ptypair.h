#pragma once

#include <QByteArray>
#include <QFile>
#include <QTemporaryDir>

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

/// A raw pseudo terminal behind a link of a fixed name: the logger's end of a line.
class PtyPair
{
public:
    PtyPair() { plugIn(); }
    ~PtyPair() { hangUp(); }

    QString name() const { return folder.filePath(QStringLiteral("Tembrin_0421")); }

    void plugIn()
    {
        master = posix_openpt(O_RDWR | O_NOCTTY);
        grantpt(master);
        unlockpt(master);
        termios raw{};
        tcgetattr(master, &raw);
        cfmakeraw(&raw);
        tcsetattr(master, TCSANOW, &raw);
        QFile::link(QString::fromLocal8Bit(ptsname(master)), name());
    }

    void hangUp()
    {
        QFile::remove(name());
        if (master >= 0)
            ::close(master);
        master = -1;
    }

    bool write(const QByteArray& bytes)
    {
        for (int done = 0; done < bytes.size();) {
            const auto now =
                ::write(master, bytes.constData() + done, static_cast<size_t>(bytes.size() - done));
            if (now <= 0)
                return false;
            done += static_cast<int>(now);
        }
        return true;
    }

    /// Up to `size` bytes, as far as they come within two seconds.
    QByteArray read(int size)
    {
        QByteArray all;
        pollfd wait{master, POLLIN, 0};
        char bytes[4096];
        while (all.size() < size && ::poll(&wait, 1, 2000) > 0) {
            const auto now = ::read(master, bytes, sizeof bytes);
            if (now <= 0)
                break;
            all.append(bytes, static_cast<int>(now));
        }
        return all;
    }

private:
    QTemporaryDir folder;
    int master = -1;
};
