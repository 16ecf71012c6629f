// Where to save a picture, and how large.
#pragma once

#include <QDialog>
#include <QSize>
#include <QString>

class QLabel;
class QLineEdit;
class QSpinBox;

namespace viewer {

/// Asks for a file and a size in pixels. It saves nothing itself.
class PictureDialog : public QDialog {
public:
    explicit PictureDialog(QSize proposedSize, QWidget* parent = nullptr);

    QString GetPath() const;
    QSize GetSize() const;

private:
    void ChoosePath();

    QLineEdit* m_path;
    QSpinBox* m_width;
    QSpinBox* m_height;
};

} // namespace viewer
