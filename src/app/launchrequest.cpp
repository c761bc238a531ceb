#include "launchrequest.h"

#include <QFileInfo>

LaunchRequest launchRequest(const QString &argument, const QDir &workingDirectory)
{
    if (argument.startsWith(QStringLiteral("file:"), Qt::CaseInsensitive)) {
        const QUrl url(argument);
        if (url.isLocalFile())
            return LaunchFile {url, QFileInfo(url.toLocalFile()).fileName()};
    }
    if (argument.contains(QStringLiteral("://")) || argument.trimmed().startsWith(u'<')
        || argument.trimmed().startsWith(u'['))
        return LaunchAddress {argument};
    const QFileInfo file(workingDirectory, argument);
    return LaunchFile {QUrl::fromLocalFile(file.absoluteFilePath()), file.fileName()};
}
