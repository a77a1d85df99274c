// ClassicIcon: the icns icon family written by hand, stored through ResourceFork and FinderInfo.
#include "app/engine/ClassicIcon.h"

#include "files/AppleDouble.h"
#include "files/FinderInfo.h"
#include "files/ResourceFork.h"
#include "support/Failure.h"

#include <QBuffer>
#include <QImageWriter>
#include <QtEndian>

#include <array>

using namespace Qt::StringLiterals;

namespace orvel {

namespace {

constexpr FileTypeCode IconFamilyType = 0x69636e73; // 'icns'

struct Member
{
    const char *type;
    int side;
};

// The PNG members a Finder picks from, largest first so that each is scaled from the one before.
constexpr std::array<Member, 7> Members = { { { "ic10", 1024 }, { "ic09", 512 }, { "ic08", 256 },
    { "ic07", 128 }, { "icp6", 64 }, { "icp5", 32 }, { "icp4", 16 } } };

QByteArray pngOf(const QImage &image)
{
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "png");
    return writer.write(image) ? png : QByteArray();
}

void appendBe32(QByteArray &out, quint32 value)
{
    char b[4];
    qToBigEndian(value, b);
    out.append(b, 4);
}

} // namespace

QByteArray ClassicIcon::iconFamilyData(const QImage &square)
{
    if (square.isNull())
        return QByteArray();
    const int side = std::max(square.width(), square.height());
    QImage current = square.convertToFormat(QImage::Format_ARGB32);
    std::array<QByteArray, Members.size()> pngs;
    for (size_t i = 0; i < Members.size(); ++i) {
        const int target = Members[i].side;
        if (target > side && target > 32)
            continue;
        if (current.width() != target || current.height() != target)
            current = current.scaled(target, target, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        pngs[i] = pngOf(current);
        if (pngs[i].isEmpty())
            return QByteArray();
    }
    QByteArray members;
    // Smallest first, the order in which icon families are usually laid out.
    for (size_t i = Members.size(); i-- > 0;) {
        if (pngs[i].isEmpty())
            continue;
        members.append(Members[i].type, 4);
        appendBe32(members, quint32(8 + pngs[i].size()));
        members.append(pngs[i]);
    }
    QByteArray family("icns");
    appendBe32(family, quint32(8 + members.size()));
    return family + members;
}

bool ClassicIcon::setIconForFile(const QImage &square, const QString &path, QString *error)
{
    const QByteArray family = iconFamilyData(square);
    if (family.isEmpty())
        return failure(error, u"the icon could not be encoded"_s);
    const QString companion = AppleDouble::pathForFile(path);
    const std::unique_ptr<ResourceFork> fork = ResourceFork::resourceForkForWritingAtPath(path);
    if (!fork)
        return failure(error,
            u"its resource fork cannot be opened (the file, its attribute or %1 is unreadable or damaged)"_s
                .arg(companion));
    if (!fork->addData(family, IconFamilyType, ResourceID))
        return failure(error,
            u"neither its attribute nor %1 can hold the %2-byte icon"_s.arg(companion).arg(family.size()));
    if (!setHasCustomIconOfFile(path, true))
        return failure(error, u"its Finder info cannot be written"_s);
    return true;
}

} // namespace orvel
