// The frames that the batch runner and its worker processes exchange.
//
// The protocol on the socket that is a worker's standard input and output is a sequence of frames,
// each a native 32-bit byte count and that many bytes. A request is the file's path in UTF-16,
// followed, when the thumbnail goes into a folder of its own, by a NUL and that folder. An answer
// is one byte (1 made, 0 failed, 2 skipped) followed, for a file made, by the size of the
// thumbnail written as a native 64-bit count, else by the reason in UTF-16. Before its first
// answer a worker sends a frame of the one byte 3 once it has loaded and can take files. Paths
// travel as QString's own code units, so any name that reached the walk reaches the job unchanged.
#pragma once

#include <QByteArray>
#include <QString>

namespace orvel::detail {

/// The first byte of an answer.
constexpr char AnswerFailed = 0;
constexpr char AnswerMade = 1;
constexpr char AnswerSkipped = 2;
/// The frame a worker sends once, when it is ready for its first file.
constexpr char WorkerReady = 3;

/// A frame larger than this is not a path or a reason; the peer is confused and is dropped.
constexpr quint32 MaxFrameBytes = 1u << 20;

/// Writes the frame of payload; false when the peer is gone.
bool writeFrame(int fd, const QByteArray &payload);
/// Blocking read of one frame (the worker side); false at the end of the input or on a bad frame.
bool readFrame(int fd, QByteArray *payload);

[[nodiscard]] QByteArray utf16Bytes(const QString &text);
/// The request for the file at path whose thumbnail goes into outputFolder (beside it when empty).
[[nodiscard]] QByteArray requestFrame(const QString &path, const QString &outputFolder);
/// The path and the output folder (empty when none) of a request's payload. A path holds no NUL,
/// so a request of the path alone, as older runners send it, reads the same.
void readRequest(const QByteArray &payload, QString *path, QString *outputFolder);
/// The answer for a file made, with the bytes written.
[[nodiscard]] QByteArray madeAnswer(qint64 bytesWritten);
/// The bytes written that a made answer's payload (its first byte included) carries; 0 without them.
[[nodiscard]] qint64 bytesWrittenInAnswer(const char *payload, qsizetype size);
[[nodiscard]] QString stringFromUtf16Bytes(const char *data, qsizetype bytes);

} // namespace orvel::detail
