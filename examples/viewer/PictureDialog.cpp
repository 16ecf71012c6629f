// A line for the file, two numbers for the size.
#include "PictureDialog.h"

#include <bgfx/bgfx.h>

#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

namespace viewer {

namespace {

QSpinBox* MakeSide(QString const& name, int value) {
    auto* const side = new QSpinBox;
    side->setObjectName(name);
    side->setRange(1, static_cast<int>(bgfx::getCaps()->limits.maxTextureSize));
    side->setSuffix(" px");
    side->setValue(value);
    return side;
}

} // namespace

PictureDialog::PictureDialog(QSize proposedSize, QWidget* parent)
    : QDialog(parent),
      m_path(new QLineEdit(QDir::current().filePath("picture.png"))),
      m_width(MakeSide("width", proposedSize.width())),
      m_height(MakeSide("height", proposedSize.height())) {
    setWindowTitle("Save picture");
    setObjectName("picture");
    m_path->setObjectName("path");
    m_path->setMinimumWidth(320);

    auto* const browse = new QPushButton("&Browse…");
    connect(browse, &QPushButton::clicked, this, &PictureDialog::ChoosePath);
    auto* const pathRow = new QHBoxLayout;
    pathRow->addWidget(m_path, 1);
    pathRow->addWidget(browse);
    auto* const sizeRow = new QHBoxLayout;
    sizeRow->addWidget(m_width, 1);
    sizeRow->addWidget(new QLabel("×"));
    sizeRow->addWidget(m_height, 1);

    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* const layout = new QFormLayout(this);
    layout->addRow("&File", pathRow);
    layout->addRow("&Size", sizeRow);
    layout->addRow(buttons);
}

QString PictureDialog::GetPath() const {
    return m_path->text();
}

QSize PictureDialog::GetSize() const {
    return {m_width->value(), m_height->value()};
}

void PictureDialog::ChoosePath() {
    QString const path = QFileDialog::getSaveFileName(this, "Save picture", m_path->text(),
                                                      "Pictures (*.png *.jpg *.bmp);;All files (*)");
    if (!path.isEmpty())
        m_path->setText(path);
}

} // namespace viewer
