// What the running renderer and GPU can do, to read and to copy.
#pragma once

#include <QDialog>

namespace viewer {

/// The library's capabilities report as text and as JSON, each on a page of its own.
class CapabilitiesDialog : public QDialog {
public:
    explicit CapabilitiesDialog(QWidget* parent = nullptr);
};

} // namespace viewer
