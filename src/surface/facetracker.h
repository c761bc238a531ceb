#pragma once
// Finds faces in sampled pictures on a worker thread, one picture at a time, so that smart
// reframe never makes the window wait for a detector. Results come back on the owner's thread.
#include <QList>
#include <QObject>
#include <QRectF>
#include <QThread>
#include <functional>
#include <memory>

class FaceDetector;
class QImage;

class FaceTracker final : public QObject
{
    Q_OBJECT
public:
    // Makes the detector, on the worker thread, when the first picture comes; may return null.
    using DetectorFactory = std::function<std::unique_ptr<FaceDetector>()>;

    explicit FaceTracker(DetectorFactory factory, QObject *parent = nullptr);
    // Waits for a detection under way (a fraction of a second at most) and ends the thread.
    ~FaceTracker() override;

    // Takes a picture on the worker thread; a null picture means there was none to take.
    using PictureSource = std::function<QImage()>;

    // Starts taking a picture and finding its faces, tagged with ticket, unless a detection is
    // still under way: then nothing is done and false comes back. A picture that cannot be
    // taken gives no result.
    bool submit(PictureSource takePicture, quint64 ticket);
    bool submit(const QImage &picture, quint64 ticket);
    bool isBusy() const { return m_busy; }

Q_SIGNALS:
    // The faces found in the picture submitted with ticket, normalised to 0...1 of it.
    void facesFound(const QList<QRectF> &faces, quint64 ticket);

private:
    class Worker;
    QThread m_thread;
    Worker *m_worker = nullptr; // lives on m_thread; deleted once it has ended
    bool m_busy = false;
};
