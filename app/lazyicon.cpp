#include "app/lazyicon.h"

#include <QIconEngine>
#include <QPainter>

namespace {

class LazyIconEngine : public QIconEngine
{
public:
    explicit LazyIconEngine(const QString& file)
        : file(file)
    {
    }

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override
    {
        icon().paint(painter, rect, Qt::AlignCenter, mode, state);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        return icon().pixmap(size, mode, state);
    }

    QList<QSize> availableSizes(QIcon::Mode mode, QIcon::State state) const override
    {
        return icon().availableSizes(mode, state);
    }

    QIconEngine* clone() const override { return new LazyIconEngine(*this); }

private:
    const QIcon& icon() const
    {
        if (read.isNull())
            read = QIcon(file);
        return read;
    }

    const QString file;
    mutable QIcon read;
};

} // namespace

QIcon lazyIcon(const QString& file)
{
    return QIcon(new LazyIconEngine(file));
}
