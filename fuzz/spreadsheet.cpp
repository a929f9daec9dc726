// Any bytes that may stand in a table given to Open.
#include <QBuffer>

#include "data/expdata.h"
#include "fuzz/application.h"
#include "persistence/readwrite.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, size_t size)
{
    ensureApplication();
    QByteArray file = QByteArray::fromRawData(reinterpret_cast<const char*>(bytes), int(size));
    QBuffer device(&file);
    device.open(QIODevice::ReadOnly);
    ExpData data;
    const int channels = data.getNSens();
    QString reason;
    if (!ReadWrite::importCSV(&device, &data, &reason) && (reason.isEmpty() || data.getNSens() != channels))
        abort(); // a refusal says why and leaves the data alone
    return 0;
}
