// Takes the addresses that the code under test opens with QDesktopServices, instead of a browser.
#pragma once

#include <QDesktopServices>
#include <QList>
#include <QObject>
#include <QUrl>

namespace orvel::test {

/// While it lives, http, https and file addresses opened through QDesktopServices land in urls.
class UrlCatcher : public QObject
{
    Q_OBJECT
public:
    UrlCatcher()
    {
        for (const char *scheme : { "https", "http", "file" })
            QDesktopServices::setUrlHandler(QString::fromLatin1(scheme), this, "open");
    }
    ~UrlCatcher() override
    {
        for (const char *scheme : { "https", "http", "file" })
            QDesktopServices::unsetUrlHandler(QString::fromLatin1(scheme));
    }

    QList<QUrl> urls;

public Q_SLOTS:
    void open(const QUrl &url) { urls.append(url); }
};

} // namespace orvel::test
