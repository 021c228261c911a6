#include "controls/CommonDialog.h"

#include "platform/VbError.h"

#include <QFileDialog>
#include <QStringList>

namespace {
OpenDialogResponder &responder()
{
    static OpenDialogResponder r;
    return r;
}

// "Text (*.txt)|*.txt|All (*.*)|*.*" as Qt writes it: "Text (*.txt);;All (*.*)".
QString qtFilter(const QString &filter)
{
    const QStringList parts = filter.split(QLatin1Char('|'));
    QStringList out;
    for (int i = 0; i + 1 < parts.size(); i += 2) {
        const QString patterns = QString(parts[i + 1]).replace(QLatin1Char(';'), QLatin1Char(' '));
        out << (parts[i].contains(QLatin1Char('(')) ? parts[i] : parts[i] + QStringLiteral(" (") + patterns + QLatin1Char(')'));
    }
    return out.join(QStringLiteral(";;"));
}
} // namespace

void SetOpenDialogResponder(OpenDialogResponder r)
{
    responder() = std::move(r);
}

void CommonDialog::ShowOpen(QWidget *parent)
{
    const QString filter = qtFilter(Filter);
    const QString chosen = responder() ? responder()(DialogTitle, filter)
                                       : QFileDialog::getOpenFileName(parent, DialogTitle, QString(), filter);
    if (chosen.isEmpty())
        RaiseVbError(cdlCancel);
    FileName = chosen;
}
