#pragma once
// The benchmark table's rows and the statistics its measurements share.

#include <QElapsedTimer>
#include <QString>
#include <algorithm>
#include <vector>

namespace orvan::bench {

struct Row {
    QString measure;
    QString result;
    QString budget;
    bool met;
};
inline std::vector<Row> rows;

inline void addRow(QString measure, QString result, QString budget, bool met)
{
    rows.push_back({std::move(measure), std::move(result), std::move(budget), met});
}

inline double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

inline double elapsedMs(const QElapsedTimer& t)
{
    return double(t.nsecsElapsed()) / 1e6;
}

inline double lowest(const std::vector<double>& values)
{
    return values.empty() ? 0 : *std::min_element(values.begin(), values.end());
}

} // namespace orvan::bench
