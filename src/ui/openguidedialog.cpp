#include "openguidedialog.h"

#include "model/playermodel.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

OpenGuideDialog::OpenGuideDialog(PlayerModel &model, QWidget *parent)
    : QDialog(parent)
    , m_model(model)
{
    setWindowTitle(QStringLiteral("Open Guide"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(
        QStringLiteral("Enter the address of an XMLTV programme guide, or choose a file:"), this));
    auto *row = new QHBoxLayout;
    m_address = new QLineEdit(this);
    m_address->setPlaceholderText(QStringLiteral("https://example.com/guide.xml.gz"));
    m_address->setMinimumWidth(360);
    m_chooseFile = new QPushButton(QStringLiteral("Choose File…"), this);
    row->addWidget(m_address, 1);
    row->addWidget(m_chooseFile);
    layout->addLayout(row);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    m_open = buttons->addButton(QStringLiteral("Open"), QDialogButtonBox::AcceptRole);
    m_open->setDefault(true);
    layout->addWidget(buttons);

    const auto updateOpen = [this] {
        m_open->setEnabled(!m_address->text().trimmed().isEmpty());
    };
    connect(m_address, &QLineEdit::textChanged, this, updateOpen);
    updateOpen();
    connect(m_chooseFile, &QPushButton::clicked, this, [this] {
        if (const std::optional<QString> path = m_model.chooseGuideFile())
            m_address->setText(*path);
    });
    connect(buttons, &QDialogButtonBox::accepted, this, [this] {
        m_model.openGuide(m_address->text());
        accept();
    });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}
