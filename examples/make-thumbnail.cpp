// Writes a PNG thumbnail of at most SIZE pixels on its longer side for a picture or a PDF.
#include <image/BitmapFileType.h>
#include <image/Image.h>

#include <QCoreApplication>
#include <QFile>
#include <QTextStream>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    QTextStream err(stderr);
    bool sizeOk = false;
    const int size = args.size() == 4 ? args[3].toInt(&sizeOk) : 0;
    if (!sizeOk || size < 1) {
        err << "usage: make-thumbnail FILE OUTPUT.png SIZE\n";
        return 2;
    }
    QString error;
    const orvel::ImagePtr image = orvel::Image::thumbnailForFile(args[1], size, false, true, nullptr, &error);
    if (!image) {
        err << args[1] << ": " << (error.isEmpty() ? QStringLiteral("cannot be read") : error) << '\n';
        return 1;
    }
    const QByteArray png = image->representationUsingType(orvel::PNGFileType, 1.0f);
    QFile file(args[2]);
    if (png.isEmpty() || !file.open(QIODevice::WriteOnly) || file.write(png) != png.size()) {
        err << args[2] << ": cannot be written\n";
        return 1;
    }
    return 0;
}
