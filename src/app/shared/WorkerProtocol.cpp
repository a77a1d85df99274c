// The frames that the batch runner and its worker processes exchange.
#include "app/shared/WorkerProtocol.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>

namespace orvel::detail {

namespace {

bool writeAll(int fd, const char *data, size_t size)
{
    while (size > 0) {
        // MSG_NOSIGNAL: a worker that died must not take the batch down with SIGPIPE.
        ssize_t n = ::send(fd, data, size, MSG_NOSIGNAL);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        data += n;
        size -= size_t(n);
    }
    return true;
}

bool readAll(int fd, char *data, size_t size)
{
    while (size > 0) {
        ssize_t n = ::read(fd, data, size);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        data += n;
        size -= size_t(n);
    }
    return true;
}

} // namespace

bool writeFrame(int fd, const QByteArray &payload)
{
    QByteArray frame(sizeof(quint32), Qt::Uninitialized);
    const quint32 size = quint32(payload.size());
    std::memcpy(frame.data(), &size, sizeof size);
    frame += payload;
    return writeAll(fd, frame.constData(), size_t(frame.size()));
}

bool readFrame(int fd, QByteArray *payload)
{
    quint32 size = 0;
    if (!readAll(fd, reinterpret_cast<char *>(&size), sizeof size) || size > MaxFrameBytes)
        return false;
    payload->resize(qsizetype(size));
    return readAll(fd, payload->data(), size);
}

QByteArray utf16Bytes(const QString &text)
{
    return QByteArray(
        reinterpret_cast<const char *>(text.utf16()), text.size() * qsizetype(sizeof(char16_t)));
}

QByteArray requestFrame(const QString &path, const QString &outputFolder)
{
    if (outputFolder.isEmpty())
        return utf16Bytes(path);
    return utf16Bytes(path + QChar(u'\0') + outputFolder);
}

void readRequest(const QByteArray &payload, QString *path, QString *outputFolder)
{
    const QString text = stringFromUtf16Bytes(payload.constData(), payload.size());
    const qsizetype nul = text.indexOf(QChar(u'\0'));
    *path = nul < 0 ? text : text.left(nul);
    *outputFolder = nul < 0 ? QString() : text.mid(nul + 1);
}

QByteArray madeAnswer(qint64 bytesWritten)
{
    QByteArray answer(1, AnswerMade);
    answer.append(reinterpret_cast<const char *>(&bytesWritten), sizeof bytesWritten);
    return answer;
}

qint64 bytesWrittenInAnswer(const char *payload, qsizetype size)
{
    qint64 bytes = 0;
    if (size != qsizetype(1 + sizeof bytes) || payload[0] != AnswerMade)
        return 0;
    std::memcpy(&bytes, payload + 1, sizeof bytes);
    return std::max<qint64>(bytes, 0);
}

QString stringFromUtf16Bytes(const char *data, qsizetype bytes)
{
    QString text(bytes / qsizetype(sizeof(char16_t)), Qt::Uninitialized);
    std::memcpy(text.data(), data, size_t(text.size()) * sizeof(char16_t));
    return text;
}

} // namespace orvel::detail
