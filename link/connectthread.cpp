#include "link/connectthread.h"

ConnectThread::ConnectThread(PortOpener* opener, QObject* parent)
    : QThread(parent)
    , opener(opener)
{
    connect(this, &QThread::finished, this, &QObject::deleteLater);
}

void ConnectThread::run()
{
    opener->open();
}
