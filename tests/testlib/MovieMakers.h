// Real movies for the tests, made by the ffmpeg tool: every second of picture has its own colour.
#pragma once

#include <QColor>
#include <QImage>
#include <QString>
#include <QStringList>

namespace orvel::test {

/// The colour of second s of a movie made by writeSecondsMovie().
QColor colourOfSecond(int second);

/// Writes a w×h movie of the duration at fps frames per second whose frames are filled with
/// colourOfSecond(floor(t)). codecArgs choose the encoder (default H.264 with a single key frame, so
/// a seek has to decode forward); extraArgs go before the output (metadata, filters). The container
/// follows the extension.
bool writeSecondsMovie(const QString &path, double seconds, int w = 32, int h = 32, int fps = 10,
    const QStringList &codecArgs = {}, const QStringList &extraArgs = {});

/// Writes a w×h movie of count frames at rate (an ffmpeg rate such as "30000/1001") whose frame n
/// is filled with colourOfSecond(n), encoded with codecArgs, in the container of the extension.
bool writeNumberedFramesMovie(const QString &path, int count, const QString &rate,
    const QStringList &codecArgs, int w = 32, int h = 32);

/// Runs the ffmpeg tool with the arguments (after "-v error -y"); answers whether it succeeded.
bool runFFmpeg(const QStringList &args);

/// The colour at the centre of the picture.
QColor centreColour(const QImage &picture);

} // namespace orvel::test
