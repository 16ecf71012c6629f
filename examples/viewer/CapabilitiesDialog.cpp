// Two pages and two buttons.
#include "CapabilitiesDialog.h"

#include <zx3DQt/CapsReport.h>

#include <QApplication>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QJsonDocument>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

namespace viewer {

using namespace zarvex;

namespace {

QPlainTextEdit* MakePage(QString const& name, QString const& text) {
    auto* const page = new QPlainTextEdit(text);
    page->setObjectName(name);
    page->setReadOnly(true);
    page->setLineWrapMode(QPlainTextEdit::NoWrap);
    page->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    return page;
}

} // namespace

CapabilitiesDialog::CapabilitiesDialog(QWidget* parent) : QDialog(parent) {
    setWindowTitle("Capabilities");
    setObjectName("capabilities");
    resize(640, 560);

    bgfx::Caps const& caps = *bgfx::getCaps();
    auto* const pages = new QTabWidget;
    pages->addTab(MakePage("text", zx3DQt::ToString(caps)), "&Text");
    pages->addTab(MakePage("json", QString::fromUtf8(QJsonDocument(zx3DQt::ToJson(caps)).toJson())), "&JSON");

    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    auto* const copy = buttons->addButton("&Copy", QDialogButtonBox::ActionRole);
    copy->setObjectName("copy");
    connect(copy, &QPushButton::clicked, pages, [pages] {
        auto const* const page = static_cast<QPlainTextEdit const*>(pages->currentWidget());
        QApplication::clipboard()->setText(page->toPlainText());
    });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(pages);
    layout->addWidget(buttons);
}

} // namespace viewer
