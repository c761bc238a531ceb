#include "testfaces.h"

#include <QPainter>
#include <QTest>

namespace TestFaces {

QString directory()
{
    return QStringLiteral(LUMO_TEST_FACES_DIR);
}

QList<Photo> photos()
{
    // Boxes read off the photographs: brow to chin, ear to ear.
    return {
        {QStringLiteral("astronaut.png"), QRectF(0.34, 0.14, 0.20, 0.20)},
        {QStringLiteral("messi5.jpg"), QRectF(0.405, 0.28, 0.067, 0.107)},
    };
}

QImage load(const Photo &photo)
{
    const QString path = directory() + QLatin1Char('/') + photo.fileName;
    QImage image(path);
    if (image.isNull()) {
        qWarning("missing %s: run ./lumo setup", qPrintable(path));
        return {};
    }
    return image.convertToFormat(QImage::Format_RGB32);
}

QImage compose(const QImage &image, const QRectF &face, QSize frameSize, int imageHeight, int left,
               QRectF *faceInFrame)
{
    QImage frame(frameSize, QImage::Format_RGB32);
    frame.fill(QColor(128, 128, 128));
    const double scale = double(imageHeight) / image.height();
    const QRectF placed(left, (frameSize.height() - imageHeight) / 2.0, image.width() * scale,
                        imageHeight);
    QPainter painter(&frame);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(placed, image);
    painter.end();
    if (faceInFrame) {
        *faceInFrame = QRectF((placed.x() + face.x() * placed.width()) / frameSize.width(),
                              (placed.y() + face.y() * placed.height()) / frameSize.height(),
                              face.width() * placed.width() / frameSize.width(),
                              face.height() * placed.height() / frameSize.height());
    }
    return frame;
}

bool hits(const QList<QRectF> &found, const QRectF &face)
{
    const QRectF grown
        = face.adjusted(-face.width() / 4, -face.height() / 4, face.width() / 4, face.height() / 4);
    for (const QRectF &box : found) {
        if (grown.contains(box.center()))
            return true;
    }
    return false;
}

} // namespace TestFaces
