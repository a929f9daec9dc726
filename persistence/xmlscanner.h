#pragma once

#include <QCoreApplication>
#include <QString>
#include <QStringView>
#include <QVector>

#include <memory>

class QIODevice;
class QTextDecoder;

/// Reads an XML document token by token, without ever holding more of it than one tag or one text. Text of
/// nothing but blanks between elements is not reported. A document that defines entities of its own is
/// refused, as are nesting, attributes and texts beyond sane bounds, so a small file can't ask for much
/// memory.
///
/// What name(), attribute() and text() give is valid until the next call of next().
class XmlScanner
{
    Q_DECLARE_TR_FUNCTIONS(XmlScanner)

public:
    enum Token
    {
        StartElement, ///< also of an element without content, whose EndElement follows
        EndElement,
        Text,
        EndOfDocument,
        Failed ///< for good; reason() says why
    };

    /// `device` is open for reading, not owned and outlives this object.
    explicit XmlScanner(QIODevice* device);
    ~XmlScanner();

    Token next();
    /// Goes on behind the end of the element whose start was read last.
    void skipElement();
    QStringView name() const { return elementName; }
    /// Null when there is no such attribute.
    QStringView attribute(QLatin1String key) const;
    QStringView text() const { return textValue; }
    QString reason() const { return failure; }

private:
    struct Attribute
    {
        QStringView key;
        QStringView value;
    };

    bool fill();
    bool chooseCodec(const QByteArray& start);
    int left() const { return buffer.size() - begin; }
    ushort at(int offset) const { return buffer.at(begin + offset).unicode(); }
    bool startsWith(QLatin1String markup);
    int find(QLatin1String what, int from);
    int findTagEnd(const QString& nestedFault);
    int afterBlanks();
    Token readContent();
    Token readCData();
    Token readStartTag();
    Token readEndTag();
    bool readAttributes(int from, int end);
    bool skipProlog();
    QStringView decoded(int from, int end, bool isAttribute);
    Token fail(const QString& cause);
    Token failAtEnd();

    QIODevice* const device;
    std::unique_ptr<QTextDecoder> decoder;
    QString buffer;
    QString piece;
    int begin = 0; ///< where the token that is read next starts in the buffer
    bool isAtEnd = false;
    QVector<QString> open; ///< names of the elements around
    bool isRootSeen = false;
    bool isSelfClosed = false; ///< the end of the last element was in its start tag
    QStringView elementName;
    QStringView textValue;
    QVector<Attribute> attributes;
    QString failure;
};
