#include "shell/sheet/SheetPreview.h"

#include "shell/sheet/SheetPainter.h"

#include <QDialogButtonBox>
#include <QIODevice>
#include <QPdfWriter>
#include <QPrintDialog>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <QPrinterInfo>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr QSize kInitialSize(620, 660);

} // namespace

SheetPreview::SheetPreview(const SongSheet& sheet, QWidget* parent)
    : QDialog(parent), sheet_(sheet), printer_(std::make_unique<QPrinter>(QPrinter::HighResolution))
{
    setWindowTitle(tr("Hoja para cantar"));
    resize(kInitialSize);
    printer_->setPageSize(QPageSize(QPageSize::A4));
    printer_->setDocName(sheet_.title);
    auto* pages = new QPrintPreviewWidget(printer_.get());
    pages->setAccessibleName(tr("Vista previa de la hoja"));
    connect(pages, &QPrintPreviewWidget::paintRequested, this,
            [this](QPrinter* printer) { SheetPainter::paint(sheet_, *printer); });

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    auto* save = buttons->addButton(tr("Guardar PDF…"), QDialogButtonBox::ActionRole);
    print_ = buttons->addButton(tr("Imprimir…"), QDialogButtonBox::ActionRole);
    buttons->button(QDialogButtonBox::Close)->setText(tr("Cerrar"));
    connect(save, &QPushButton::clicked, this, &SheetPreview::saveRequested);
    connect(print_, &QPushButton::clicked, this, &SheetPreview::print);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    if (QPrinterInfo::availablePrinterNames().isEmpty()) {
        print_->setEnabled(false);
        print_->setToolTip(tr("No hay ninguna impresora: guardá un PDF."));
    }
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(pages, 1);
    layout->addWidget(buttons);
    save->setDefault(true);
}

SheetPreview::~SheetPreview()
{
    // It shows pages of the printer, which goes before the children do.
    delete findChild<QPrintPreviewWidget*>();
}

void SheetPreview::print()
{
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageSize(QPageSize(QPageSize::A4));
    printer.setDocName(sheet_.title);
    QPrintDialog dialog(&printer, this);
    if (dialog.exec() == QDialog::Accepted)
        SheetPainter::paint(sheet_, printer);
}

bool SheetPreview::writePdf(const SongSheet& sheet, QIODevice& device)
{
    QPdfWriter writer(&device);
    writer.setPageSize(QPageSize(QPageSize::A4));
    writer.setTitle(sheet.title);
    // A writer of PDF does not look where its bytes go.
    return SheetPainter::paint(sheet, writer) > 0 && device.isWritable();
}
