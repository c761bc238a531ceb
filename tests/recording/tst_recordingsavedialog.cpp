// The save dialog of a recording, shown for real and answered as a user would.
#include "recording/recordingsavedialog.h"

#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

class TestRecordingSaveDialog : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

    // Types name into the next save dialog and saves.
    void typeIntoNextDialog(const QString &name)
    {
        QTimer::singleShot(20, this, [this, name] {
            auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            if (!dialog)
                return typeIntoNextDialog(name);
            // Typed into the name field once the dialog has settled on its proposal.
            QTimer::singleShot(300, dialog, [dialog, name] {
                auto *field = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
                QVERIFY(field);
                field->setText(name);
                static_cast<QDialog *>(dialog)->accept();
            });
        });
    }

    std::optional<QString> save(const QString &typed)
    {
        typeIntoNextDialog(typed);
        // Qt's own dialog, whose name field a test can type into.
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        return RecordingSaveDialog::choose(
            nullptr,
            {QStringLiteral("Save Recording"), QStringLiteral("Proposed.mp4"), m_folder.path()});
    }

private Q_SLOTS:
    void aNameTypedWithAnotherTypeIsSavedAsMp4()
    {
        const std::optional<QString> path = save(QStringLiteral("clip.mov"));
        QVERIFY(path);
        QCOMPARE(*path, m_folder.filePath(QStringLiteral("clip.mp4")));
    }

    void aNameWithoutTypeGetsIt()
    {
        const std::optional<QString> path = save(QStringLiteral("holiday"));
        QVERIFY(path);
        QCOMPARE(*path, m_folder.filePath(QStringLiteral("holiday.mp4")));
    }
};

QTEST_MAIN(TestRecordingSaveDialog)
#include "tst_recordingsavedialog.moc"
