#pragma once

#include <QString>

#include <functional>

class QWidget;

// The file dialog of a screen, with its title and filter kept as properties ("Text (*.txt)|*.txt",
// description and pattern in pairs). A cancelled dialog raises error 32755, as the original's did with
// its cancel error set.
class CommonDialog final
{
public:
    QString DialogTitle;
    QString Filter;
    QString FileName;

    void ShowOpen(QWidget *parent);
};

constexpr long cdlCancel = 32755;

// Tests answer the dialog instead of a person: the responder gets the title and the Qt filter and gives
// the chosen file, or an empty text for Cancel.
using OpenDialogResponder = std::function<QString(const QString &title, const QString &filter)>;
void SetOpenDialogResponder(OpenDialogResponder responder);
