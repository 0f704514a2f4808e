#pragma once

#include "shell/sheet/SongSheet.h"

#include <QDialog>

#include <memory>

class QIODevice;
class QPrinter;
class QPushButton;

/// Shows the pages of a sheet as they will be printed, and prints them or has them saved.
class SheetPreview : public QDialog {
    Q_OBJECT

public:
    explicit SheetPreview(const SongSheet& sheet, QWidget* parent = nullptr);
    ~SheetPreview() override;

    /// Writes the pages as PDF to a device that is open. False where it does not take them.
    static bool writePdf(const SongSheet& sheet, QIODevice& device);

signals:
    /// The user wants a file of it.
    void saveRequested();

private:
    void print();

    SongSheet sheet_;
    std::unique_ptr<QPrinter> printer_;
    QPushButton* print_;
};
