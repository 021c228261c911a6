#include "shell/GridOrder.h"

#include <algorithm>
#include <cmath>

bool IsWholeNumber(const QString &text, double *value)
{
    // Most cells are names: a text that cannot start a number is passed over without converting it.
    if (text.isEmpty())
        return false;
    const QChar first = text.front();
    if (!first.isDigit() && !first.isSpace() && first != QLatin1Char('-') && first != QLatin1Char('+') &&
        first != QLatin1Char('.'))
        return false;
    bool ok = false;
    const double v = text.trimmed().toDouble(&ok);
    // " nan" reads as a number but orders against none: the sorts take it as a text.
    ok = ok && !std::isnan(v);
    if (ok && value)
        *value = v;
    return ok && !text.trimmed().isEmpty();
}

double LeadingNumber(const QString &text)
{
    int i = 0;
    const int n = text.size();
    while (i < n && text[i].isSpace())
        ++i;
    const int start = i;
    if (i < n && (text[i] == QLatin1Char('-') || text[i] == QLatin1Char('+')))
        ++i;
    bool point = false;
    while (i < n && (text[i].isDigit() || (!point && text[i] == QLatin1Char('.')))) {
        point = point || text[i] == QLatin1Char('.');
        ++i;
    }
    if (i < n && (text[i] == QLatin1Char('E') || text[i] == QLatin1Char('e'))) {
        int j = i + 1;
        if (j < n && (text[j] == QLatin1Char('-') || text[j] == QLatin1Char('+')))
            ++j;
        if (j < n && text[j].isDigit()) {
            while (j < n && text[j].isDigit())
                ++j;
            i = j;
        }
    }
    bool ok = false;
    const double v = text.mid(start, i - start).toDouble(&ok);
    return ok ? v : 0.0;
}

std::vector<int> GridSortOrder(const QList<QStringList> &keys, int kind)
{
    const bool numeric = kind >= GridSortNumericAscending;
    const bool descending = kind == GridSortGenericDescending || kind == GridSortNumericDescending;
    // Each key is read once, not once per comparison: a sort of 100,000 rows stays quick.
    struct Key {
        bool isNumber;
        double number;
        QString text;
    };
    const int n = int(keys.size());
    int width = 0;
    for (const QStringList &row : keys)
        width = std::max(width, int(row.size()));
    std::vector<Key> cells(size_t(n) * size_t(width));
    for (int i = 0; i < n; ++i) {
        for (int c = 0; c < width; ++c) {
            Key &k = cells[size_t(i) * width + c];
            k.text = c < keys[i].size() ? keys[i][c] : QString();
            k.number = 0;
            k.isNumber = numeric || IsWholeNumber(k.text, &k.number);
            if (numeric)
                k.number = LeadingNumber(k.text);
        }
    }
    std::vector<int> order(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i)
        order[size_t(i)] = i;
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
        for (int c = 0; c < width; ++c) {
            const Key &x = cells[size_t(a) * width + c], &y = cells[size_t(b) * width + c];
            // Numbers by value, texts by text, and every number before every text: a total order,
            // where mixing the two comparisons made "9" < "10" < "1A" < "9".
            int cmp;
            if (x.isNumber != y.isNumber)
                cmp = x.isNumber ? -1 : 1;
            else if (x.isNumber)
                cmp = x.number < y.number ? -1 : (x.number > y.number ? 1 : 0);
            else
                cmp = x.text.compare(y.text, Qt::CaseInsensitive);
            if (cmp != 0)
                return descending ? cmp > 0 : cmp < 0;
        }
        return false;
    });
    return order;
}
