// Any bytes that may stand in a file given to Open.
#include <QBuffer>

#include "fuzz/application.h"
#include "persistence/experimentreader.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, size_t size)
{
    ensureApplication();
    QByteArray file = QByteArray::fromRawData(reinterpret_cast<const char*>(bytes), int(size));
    QBuffer device(&file);
    device.open(QIODevice::ReadOnly);
    StoredExperiment experiment;
    QString reason;
    if (!ExperimentReader::read(&device, &experiment, &reason) && reason.isEmpty())
        abort(); // a refusal always says why
    return 0;
}
