#pragma once
// Photographs of real faces (fetched by `./lumo setup` from Debian and npm packages) with the
// box of every face in each, normalised to 0...1 of the photograph; pictures without faces; and
// frames made from them.
#include <QImage>
#include <QList>
#include <QRectF>
#include <QString>

namespace TestFaces {

struct Photo
{
    QString fileName;
    QList<QRectF> faces;
};

QString directory();
QList<Photo> photos();
// The photograph loaded as 32-bit BGRx; null (with a message) when it is missing.
QImage load(const Photo &photo);

// Pictures with no face in them: landscapes, buildings, objects, text, drawings, patterns.
QStringList scenes();
QString scenesDirectory();
QImage loadScene(const QString &fileName);

// A frameSize frame, mid-grey, with image scaled to imageHeight and placed so that its left
// edge is at left; faceInFrame receives the face's box normalised to the frame.
QImage compose(const QImage &image, const QRectF &face, QSize frameSize, int imageHeight, int left,
               QRectF *faceInFrame);

// A frameSize frame, mid-grey, with image scaled by scale and its point anchor (0...1 of the
// image) placed at target (0...1 of the frame). facesInFrame receives the boxes of faces that lie
// wholly inside the frame, normalised to it.
QImage place(const QImage &image, const QList<QRectF> &faces, QSize frameSize, double scale,
             QPointF anchor, QPointF target, QList<QRectF> *facesInFrame);

// Whether any of found has its centre inside face grown by a quarter on each side.
bool hits(const QList<QRectF> &found, const QRectF &face);

} // namespace TestFaces
