// Zip archives unpacked into a scratch folder: whatever the bytes, nothing may be written outside
// it, and a refused archive leaves it empty.
#include "FuzzSupport.h"

#include "files/FileManager.h"

#include <QDir>
#include <QFileInfo>

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString archive = orvel::fuzz::scratchFile(orvel::fuzz::bytesOf(data, size), "zip");
    const QString folder = QFileInfo(archive).absolutePath();
    QDir into(folder + QStringLiteral("/into"));
    into.removeRecursively();
    const bool unpacked = orvel::FileManager::decompressFileAtPath(archive, into.path());
    const QStringList beside
        = QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    for (const QString &name : beside) {
        if (name != QStringLiteral("input.zip") && name != QStringLiteral("into"))
            std::abort(); // something was written beside the target folder
    }
    if (!unpacked && !into.isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot))
        std::abort(); // a refused archive left something behind
    into.removeRecursively();
    return 0;
}
