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
    // The first two boxes were read off the photographs, brow to chin and ear to ear; those of
    // the group photographs were found at full size and checked by eye, every face in them.
    using R = QRectF;
    return {
        {QStringLiteral("astronaut.png"), {R(0.34, 0.14, 0.20, 0.20)}},
        {QStringLiteral("messi5.jpg"), {R(0.405, 0.28, 0.067, 0.107)}},
        {QStringLiteral("sample1.jpg"),
         {R(0.4282, 0.338, 0.108, 0.1706), R(0.212, 0.2841, 0.0937, 0.1825),
          R(0.7553, 0.1578, 0.1291, 0.1854)}},
        {QStringLiteral("sample2.jpg"),
         {R(0.7453, 0.1218, 0.1108, 0.1592), R(0.4682, 0.1742, 0.0823, 0.1543),
          R(0.1943, 0.0946, 0.076, 0.2243)}},
        {QStringLiteral("sample3.jpg"),
         {R(0.7883, 0.2162, 0.0903, 0.2013), R(0.5558, 0.1439, 0.1146, 0.2259),
          R(0.3089, 0.2373, 0.1048, 0.2052)}},
        {QStringLiteral("sample4.jpg"),
         {R(0.1369, 0.1314, 0.0755, 0.1753), R(0.5099, 0.0993, 0.0971, 0.1973),
          R(0.3444, 0.0409, 0.1017, 0.1843), R(0.6619, 0.0813, 0.0823, 0.1942)}},
        {QStringLiteral("sample5.jpg"),
         {R(0.4126, 0.0758, 0.08, 0.1631), R(0.7361, 0.2989, 0.091, 0.2017),
          R(0.1963, 0.6173, 0.1022, 0.215), R(0.5801, 0.1396, 0.0871, 0.1667),
          R(0.3186, 0.313, 0.0778, 0.1701)}},
        {QStringLiteral("sample6.jpg"),
         {R(0.1332, 0.3122, 0.1132, 0.1857), R(0.3477, 0.2258, 0.0913, 0.1797),
          R(0.6146, 0.2205, 0.0944, 0.1594), R(0.7711, 0.1643, 0.1153, 0.1957)}},
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

QString scenesDirectory()
{
    return QStringLiteral(LUMO_TEST_SCENES_DIR);
}

QStringList scenes()
{
    // Of the packages' pictures, those with no human or animal face in them (no portraits on
    // coins, no cats or squirrels).
    return {
        QStringLiteral("opencv/HappyFish.jpg"),    QStringLiteral("opencv/LinuxLogo.jpg"),
        QStringLiteral("opencv/WindowsLogo.jpg"),  QStringLiteral("opencv/aero1.jpg"),
        QStringLiteral("opencv/aero3.jpg"),        QStringLiteral("opencv/aloeGT.png"),
        QStringLiteral("opencv/aloeL.jpg"),        QStringLiteral("opencv/apple.jpg"),
        QStringLiteral("opencv/blox.jpg"),         QStringLiteral("opencv/board.jpg"),
        QStringLiteral("opencv/box.png"),          QStringLiteral("opencv/box_in_scene.png"),
        QStringLiteral("opencv/building.jpg"),     QStringLiteral("opencv/butterfly.jpg"),
        QStringLiteral("opencv/cards.png"),        QStringLiteral("opencv/chessboard.png"),
        QStringLiteral("opencv/detect_blob.png"),  QStringLiteral("opencv/digits.png"),
        QStringLiteral("opencv/ela_original.jpg"), QStringLiteral("opencv/ellipses.jpg"),
        QStringLiteral("opencv/fruits.jpg"),       QStringLiteral("opencv/gradient.png"),
        QStringLiteral("opencv/graf1.png"),        QStringLiteral("opencv/home.jpg"),
        QStringLiteral("opencv/imageTextN.png"),   QStringLiteral("opencv/leuvenA.jpg"),
        QStringLiteral("opencv/leuvenB.jpg"),      QStringLiteral("opencv/licenseplate_motion.jpg"),
        QStringLiteral("opencv/notes.png"),        QStringLiteral("opencv/opencv-logo.png"),
        QStringLiteral("opencv/orange.jpg"),       QStringLiteral("opencv/pca_test1.jpg"),
        QStringLiteral("opencv/pic1.png"),         QStringLiteral("opencv/pic2.png"),
        QStringLiteral("opencv/pic3.png"),         QStringLiteral("opencv/pic4.png"),
        QStringLiteral("opencv/pic5.png"),         QStringLiteral("opencv/pic6.png"),
        QStringLiteral("opencv/rubberwhale1.png"), QStringLiteral("opencv/smarties.png"),
        QStringLiteral("opencv/starry_night.jpg"), QStringLiteral("opencv/stuff.jpg"),
        QStringLiteral("opencv/sudoku.png"),       QStringLiteral("opencv/text_defocus.jpg"),
        QStringLiteral("skimage/brick.png"),       QStringLiteral("skimage/bw_text.png"),
        QStringLiteral("skimage/cell.png"),        QStringLiteral("skimage/clock_motion.png"),
        QStringLiteral("skimage/coffee.png"),      QStringLiteral("skimage/color.png"),
        QStringLiteral("skimage/grass.png"),       QStringLiteral("skimage/gravel.png"),
        QStringLiteral("skimage/horse.png"),       QStringLiteral("skimage/hubble_deep_field.jpg"),
        QStringLiteral("skimage/ihc.png"),         QStringLiteral("skimage/logo.png"),
        QStringLiteral("skimage/moon.png"),        QStringLiteral("skimage/motorcycle_left.png"),
        QStringLiteral("skimage/page.png"),        QStringLiteral("skimage/retina.jpg"),
        QStringLiteral("skimage/rocket.jpg"),      QStringLiteral("skimage/text.png"),
    };
}

QImage loadScene(const QString &fileName)
{
    const QString path = scenesDirectory() + QLatin1Char('/') + fileName;
    QImage image(path);
    if (image.isNull()) {
        qWarning("missing %s: run ./lumo setup", qPrintable(path));
        return {};
    }
    return image.convertToFormat(QImage::Format_RGB32);
}

QImage place(const QImage &image, const QList<QRectF> &faces, QSize frameSize, double scale,
             QPointF anchor, QPointF target, QList<QRectF> *facesInFrame)
{
    QImage frame(frameSize, QImage::Format_RGB32);
    frame.fill(QColor(128, 128, 128));
    const QSizeF size(image.width() * scale, image.height() * scale);
    const QRectF placed(QPointF(target.x() * frameSize.width() - anchor.x() * size.width(),
                                target.y() * frameSize.height() - anchor.y() * size.height()),
                        size);
    QPainter painter(&frame);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(placed, image);
    painter.end();
    if (facesInFrame) {
        facesInFrame->clear();
        const QRectF whole(0, 0, 1, 1);
        for (const QRectF &face : faces) {
            const QRectF box((placed.x() + face.x() * size.width()) / frameSize.width(),
                             (placed.y() + face.y() * size.height()) / frameSize.height(),
                             face.width() * size.width() / frameSize.width(),
                             face.height() * size.height() / frameSize.height());
            if (whole.contains(box))
                facesInFrame->append(box);
        }
    }
    return frame;
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
