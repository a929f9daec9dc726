#include "protocol/rundecoder.h"

namespace {

SensorPtr channel(int id, const Units& units, int listIndex, int child)
{
    SensorPtr sensor = SensorPtr::create(id, units, child < 0 ? -1 : listIndex, child);
    sensor->inLoggerIndex = listIndex;
    return sensor;
}

} // namespace

RunDecoder::RunDecoder(const SensorList& list, quint16 mask, const Units& units)
    : units(units)
    , ownMask(mask)
{
    for (int i = 0; i < qMin(list.size(), 16); ++i) {
        if (mask >> i & 1)
            add(SensorKind(list.at(i)->ID, units), i);
    }
}

void RunDecoder::add(const SensorKind& kind, int listIndex)
{
    entries.append({kind, listIndex});
    bytes += kind.numBytes();
    values += kind.valueCount();
}

void RunDecoder::replace(int listIndex, const SensorKind& kind)
{
    const QVector<Entry> before = entries;
    entries.clear();
    bytes = values = 0;
    for (const Entry& entry : before)
        add(entry.listIndex == listIndex ? kind : entry.kind, entry.listIndex);
}

void RunDecoder::decode(const unsigned char* sample, double* into) const
{
    for (const Entry& entry : entries) {
        entry.kind.decode(sample, into);
        sample += entry.kind.numBytes();
        into += entry.kind.valueCount();
    }
}

SensorList RunDecoder::channels() const
{
    SensorList list;
    list.reserve(values);
    for (const Entry& entry : entries) {
        if (!entry.kind.isComposite())
            list.append(channel(entry.kind.id(), units, entry.listIndex, -1));
        for (int child = 0; entry.kind.isComposite() && child < entry.kind.valueCount(); ++child)
            list.append(channel(entry.kind.childID(child), units, entry.listIndex, child));
    }
    return list;
}
