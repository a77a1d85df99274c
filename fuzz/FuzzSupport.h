// What every fuzz target shares: a Qt application object as the workers have, and scratch files.
#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>

namespace orvel::fuzz {

/// Makes the QCoreApplication that the thumbnail workers run under (once).
void startApplication(int *argc, char ***argv);

/// The input as a byte array (a deep copy: the fuzzer's buffer is not ours to keep).
inline QByteArray bytesOf(const uint8_t *data, size_t size)
{
    return QByteArray(reinterpret_cast<const char *>(data), qsizetype(size));
}

/// Writes bytes to a scratch file with the given extension in a folder of the process's own
/// (removed at exit) and answers its path; the same path for the same extension every time.
QString scratchFile(const QByteArray &bytes, const char *extension);

} // namespace orvel::fuzz
