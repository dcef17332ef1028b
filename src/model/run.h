/// A run of addresses of one register kind on one station, as a value: what requests, poll keys and recipe items have
/// in common.
#ifndef TANEK_VS_RUN_H
#define TANEK_VS_RUN_H

#include "model/registerTable.h"

#include <QtCore/QString>
#include <QtCore/QtGlobal>

struct Run {
    qint32 station;
    QString regName;
    qint32 address;
    qint32 count;
};

template <typename Record> Run runOf(const Record &record)
{
    Run run = {record.station, record.regName, record.address, record.count};
    return run;
}

/// Makes the run of a record that of another; its other fields stay.
template <typename Record, typename OtherRecord> void setRun(Record &record, const OtherRecord &run)
{
    record.station = run.station;
    record.regName = run.regName;
    record.address = run.address;
    record.count = run.count;
}

template <typename Record, typename OtherRecord> bool isSameRun(const Record &left, const OtherRecord &right)
{
    return left.address == right.address && left.count == right.count && left.station == right.station &&
           isSameName(left.regName, right.regName);
}

#endif
