// Any bytes a logger's port may deliver, in pieces of any size, through listener, identifier and handlers.
// The first byte says in which state the logger is met, the second how long the pieces are.
#include "fuzz/application.h"
#include "link/portlistener.h"
#include "protocol/tembrindata.h"
#include "tests/link/fakeport.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, size_t size)
{
    ensureApplication();
    if (size < 2)
        return 0;
    TembrinData data(0);
    data.setGotSensorList(bytes[0] & 1);
    data.setLoggerRecognized(bytes[0] & 2);
    data.setVorta(bytes[0] & 4);
    FakePort port;
    port.open(SerialPort::OpenMode::ReadWrite);
    PortListener listener(&port, &data, 0);
    QObject::connect(&port, &SerialPort::readyRead, &listener, &PortListener::receive);
    QObject::connect(&listener, &PortListener::tooSlowSignal, &data, &TembrinData::tooSlowSignal);

    const int piece = 1 + bytes[1];
    const QByteArray stream =
        QByteArray::fromRawData(reinterpret_cast<const char*>(bytes) + 2, int(size) - 2);
    for (int position = 0; position < stream.size(); position += piece)
        port.feed(stream.mid(position, piece));
    return 0;
}
