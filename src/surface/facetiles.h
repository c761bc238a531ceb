#pragma once
// How a frame is cut into overlapping tiles for a face network with a small fixed input, and
// how the faces found in the tiles and in the whole frame are merged into one list.
#include <QList>
#include <QRect>
#include <QRectF>
#include <QSize>

namespace FaceTiles {

struct ScoredFace
{
    QRectF box; // in frame pixels
    float score = 0;
};

// Tiles of tileSize spread evenly from edge to edge, as few as cover the frame with at least
// minOverlap pixels shared by neighbours, so that a face up to minOverlap wide on a seam is
// whole in one of them; neighbours share at most half a tile. A frame no larger than a tile is
// one tile of the frame's size.
QList<QRect> layout(QSize frame, QSize tileSize, int minOverlap);

// Whether box touches a side of tile that lies inside the frame: a face cut by a seam, whose
// whole is in a neighbouring tile (or the whole-frame pass).
bool touchesInnerEdge(const QRectF &box, const QRect &tile, QSize frame, double margin = 1.0);

// Intersection over the smaller box's area: 1 when one box holds the other.
double overlapOfSmaller(const QRectF &a, const QRectF &b);

// One box per face: of boxes overlapping by more than threshold (overlapOfSmaller), the one
// with the best score stays. Equal scores keep the earlier box. Best score first.
QList<ScoredFace> merge(QList<ScoredFace> faces, double threshold = 0.5);

} // namespace FaceTiles
