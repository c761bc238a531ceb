#include "cascadefacedetector.h"

#include <QFile>
#include <opencv2/imgproc.hpp>
#include <opencv2/objdetect.hpp>

struct CascadeFaceDetector::Classifier
{
    cv::CascadeClassifier cascade;
};

CascadeFaceDetector::CascadeFaceDetector(const QString &cascadeFile)
{
    if (!QFile::exists(cascadeFile))
        return;
    auto classifier = std::make_unique<Classifier>();
    try {
        if (classifier->cascade.load(QFile::encodeName(cascadeFile).toStdString()))
            m_classifier = std::move(classifier);
    } catch (const cv::Exception &) {
        // A damaged file leaves the detector invalid.
    }
}

CascadeFaceDetector::~CascadeFaceDetector() = default;

bool CascadeFaceDetector::isValid() const
{
    return m_classifier != nullptr;
}

QString CascadeFaceDetector::name() const
{
    return QStringLiteral("Haar cascade");
}

QList<QRectF> CascadeFaceDetector::detect(const QImage &frame)
{
    if (!m_classifier || frame.isNull() || frame.depth() != 32)
        return {};
    const cv::Mat bgrx(frame.height(), frame.width(), CV_8UC4, const_cast<uchar *>(frame.bits()),
                       size_t(frame.bytesPerLine()));
    const double scale = std::min(1.0, double(searchWidth) / frame.width());
    cv::Mat small;
    cv::resize(bgrx, small, cv::Size(), scale, scale, cv::INTER_AREA);
    cv::Mat gray;
    cv::cvtColor(small, gray, cv::COLOR_BGRA2GRAY);
    cv::equalizeHist(gray, gray);
    std::vector<cv::Rect> found;
    try {
        m_classifier->cascade.detectMultiScale(gray, found, 1.1, 4, 0, cv::Size(20, 20));
    } catch (const cv::Exception &) {
        return {};
    }
    QList<QRectF> faces;
    for (const cv::Rect &r : found) {
        faces.append(QRectF(double(r.x) / gray.cols, double(r.y) / gray.rows,
                            double(r.width) / gray.cols, double(r.height) / gray.rows));
    }
    return faces;
}
