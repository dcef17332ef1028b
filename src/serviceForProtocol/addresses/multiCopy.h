/// Runs of addresses for the host's editor.
#ifndef TANEK_VS_MULTI_COPY_H
#define TANEK_VS_MULTI_COPY_H

#include <QtCore/QString>
#include <QtCore/QVector>

/// Appends the texts and numbers of `number` addresses from `start` on. Step -1 is that of 16-bit values, -2 that of
/// 32-bit values; one below 1 counts as 1. An address above `highest` is replaced by it.
/// @return 1, or 2 when an address was replaced or the text of one could not be made, which ends the run.
int multiCp(const QString &regName, const QString &addrFormat, int start, int number, int step, QVector<QString> &texts,
            QVector<int> &numbers, int highest, const QString &highestText);

#endif
