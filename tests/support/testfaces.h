#pragma once
// Photographs of real faces (fetched by `./lumo setup` from Debian packages) with the face's
// box in each, normalised to 0...1 of the photograph, and frames made from them.
#include <QImage>
#include <QList>
#include <QRectF>
#include <QString>

namespace TestFaces {

struct Photo
{
    QString fileName;
    QRectF face;
};

QString directory();
QList<Photo> photos();
// The photograph loaded as 32-bit BGRx; null (with a message) when it is missing.
QImage load(const Photo &photo);

// A frameSize frame, mid-grey, with image scaled to imageHeight and placed so that its left
// edge is at left; faceInFrame receives the face's box normalised to the frame.
QImage compose(const QImage &image, const QRectF &face, QSize frameSize, int imageHeight, int left,
               QRectF *faceInFrame);

// Whether any of found has its centre inside face grown by a quarter on each side.
bool hits(const QList<QRectF> &found, const QRectF &face);

} // namespace TestFaces
