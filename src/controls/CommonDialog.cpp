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
        // Names on Linux are case-sensitive: LIST.TXT is as much a text file as list.txt.
        QStringList patterns = parts[i + 1].split(QLatin1Char(';'), Qt::SkipEmptyParts);
        for (const QString &p : QStringList(patterns))
            if (p.toUpper() != p)
                patterns << p.toUpper();
        const QString patternText = patterns.join(QLatin1Char(' '));
        QString description = parts[i];
        const qsizetype open = description.indexOf(QLatin1Char('('));
        if (open >= 0)
            description.truncate(open);
        out << description.trimmed() + QStringLiteral(" (") + patternText + QLatin1Char(')');
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
