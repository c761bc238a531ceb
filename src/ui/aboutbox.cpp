#include "aboutbox.h"

#include "recording/ffmpegversion.h"
#include "surface/facedetectors.h"

#include <QApplication>
#include <QMessageBox>

#include <mpv/client.h>

namespace AboutBox {

QString text()
{
    const unsigned long mpv = mpv_client_api_version();
    QStringList lines {
        QStringLiteral("LumoMediaPlayerPro %1").arg(QApplication::applicationVersion()),
        QString(),
        QStringLiteral("Built on Qt %1, libmpv (client API %2.%3), %4 and %5.")
            .arg(QString::fromLatin1(qVersion()))
            .arg(mpv >> 16)
            .arg(mpv & 0xffff)
            .arg(FFmpeg::versionText(), FaceDetectors::openCvVersion()),
        QString(),
        QStringLiteral("Face models:"),
    };
    for (const QString &licence : FaceDetectors::modelLicences())
        lines.append(QStringLiteral("• ") + licence);
    return lines.join(u'\n');
}

void show(QWidget *parent)
{
    auto *box = new QMessageBox(QMessageBox::Information, QString::fromUtf16(title), text(),
                                QMessageBox::Ok, parent);
    box->setObjectName(QStringLiteral("aboutBox"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

} // namespace AboutBox
