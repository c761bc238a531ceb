#include "facescommand.h"

#include "orderedjson.h"
#include "surface/facedetector.h"
#include "surface/facedetectors.h"

#include <QElapsedTimer>
#include <QImage>
#include <QImageReader>
#include <QJsonArray>
#include <QLoggingCategory>

#include <cmath>
#include <cstdio>

namespace {

// Coordinates to four decimals: a tenth of a pixel of a 4K picture.
double rounded(double value)
{
    return std::round(value * 10000) / 10000;
}

} // namespace

int runFacesCommand(const QStringList &arguments)
{
    if (arguments.isEmpty()) {
        std::fputs("usage: lumo-cli faces IMAGE...\n", stderr);
        return 2;
    }
    // libpng's remarks on colour profiles say nothing about the faces.
    QLoggingCategory::setFilterRules(QStringLiteral("qt.gui.imageio*=false"));
    const std::unique_ptr<FaceDetector> detector = FaceDetectors::makeDefault();
    if (!detector) {
        std::fprintf(stderr, "lumo-cli: no face detector could be loaded from %s\n",
                     qUtf8Printable(FaceDetectors::modelDirectory()));
        return 1;
    }
    int status = 0;
    for (const QString &path : arguments) {
        QImageReader reader(path);
        // A picture whose pixels alone would pass a gigabyte is refused before it is decoded.
        reader.setAllocationLimit(1024);
        QImage image = reader.read();
        if (image.isNull()) {
            std::fprintf(stderr, "lumo-cli: cannot read %s: %s\n", qUtf8Printable(path),
                         qUtf8Printable(reader.errorString()));
            status = 1;
            continue;
        }
        // As smart reframe sees a picture: 32-bit BGRx, scaled down to its sample.
        image.convertTo(QImage::Format_RGB32);
        image = FaceDetectors::sampleOf(image);
        QElapsedTimer timer;
        timer.start();
        const QList<QRectF> faces = detector->detect(image);
        const double ms = double(timer.nsecsElapsed()) / 1e6;
        QJsonArray boxes;
        for (const QRectF &face : faces) {
            boxes.append(QJsonArray {rounded(face.x()), rounded(face.y()), rounded(face.width()),
                                     rounded(face.height())});
        }
        const OrderedJsonObject line {{QStringLiteral("image"), path},
                                      {QStringLiteral("faces"), boxes},
                                      {QStringLiteral("ms"), std::round(ms * 10) / 10}};
        std::printf("%s\n", toCompactJson(line).constData());
        std::fflush(stdout);
    }
    return status;
}
