#include "persistence/xmlscanner.h"

#include <QIODevice>
#include <QTextCodec>

#include <algorithm>

namespace {

constexpr int chunkSize = 64 * 1024;
constexpr int maxToken = 32 * 1024 * 1024; // characters; a picture of 24 MB
constexpr int maxDepth = 32;
constexpr int maxAttributes = 64;
constexpr int longestEntity = 10; // "&#x10FFFF;"

bool isBlank(ushort c)
{
    return c == ' ' || c == '\n' || c == '\t' || c == '\r';
}

/// The character that "&...;" stands for, 0 if none.
uint entityValue(QStringView name)
{
    struct Named
    {
        const char16_t* name;
        char value;
    };
    static constexpr Named named[] = {
        {u"lt", '<'}, {u"gt", '>'}, {u"amp", '&'}, {u"quot", '"'}, {u"apos", '\''}};
    for (const Named& row : named) {
        if (name == QStringView(row.name))
            return uint(row.value);
    }
    if (!name.startsWith(u'#'))
        return 0;
    const bool isHex = name.mid(1).startsWith(u'x');
    bool isNumber = false;
    const uint value = name.mid(isHex ? 2 : 1).toString().toUInt(&isNumber, isHex ? 16 : 10);
    const bool isCharacter = isNumber && value <= QChar::LastValidCodePoint && !QChar::isSurrogate(value);
    return isCharacter ? value : 0;
}

QString badMarkup()
{
    return XmlScanner::tr("it is not well-formed");
}

} // namespace

XmlScanner::XmlScanner(QIODevice* device)
    : device(device)
{
    buffer.reserve(2 * chunkSize);
}

XmlScanner::~XmlScanner() = default;

XmlScanner::Token XmlScanner::fail(const QString& cause)
{
    if (failure.isEmpty())
        failure = cause;
    return Failed;
}

XmlScanner::Token XmlScanner::failAtEnd()
{
    return fail(isRootSeen ? tr("it ends in the middle") : tr("it is no XML file"));
}

QStringView XmlScanner::attribute(QLatin1String key) const
{
    for (const Attribute& attribute : attributes) {
        if (attribute.key == key)
            return attribute.value;
    }
    return {};
}

/// Gets more text into the buffer, whose positions before `begin` may go.
bool XmlScanner::fill()
{
    if (isAtEnd || !failure.isEmpty())
        return false;
    if (left() > maxToken) {
        fail(tr("a part of it is too long"));
        return false;
    }
    do { // half a character gives no text yet
        const QByteArray bytes = device->read(chunkSize);
        if (bytes.isEmpty()) {
            isAtEnd = true;
            return false;
        }
        if (!decoder && !chooseCodec(bytes))
            return false;
        piece.resize(0); // some codecs append
        decoder->toUnicode(&piece, bytes.constData(), bytes.size());
        if (decoder->hasFailure()) {
            fail(tr("its characters are not in the encoding that it names"));
            return false;
        }
    } while (piece.isEmpty());
    // A long token is not moved for each piece of it.
    if (begin >= buffer.size() / 2) {
        buffer.remove(0, begin);
        begin = 0;
    }
    buffer += piece;
    return true;
}

bool XmlScanner::chooseCodec(const QByteArray& start)
{
    QByteArray name = "UTF-8";
    if (start.startsWith("\xFF\xFE") || start.startsWith("\xFE\xFF"))
        name = "UTF-16"; // the byte order mark tells the rest
    else if (start.startsWith(QByteArray("<\0", 2)))
        name = "UTF-16LE";
    else if (start.startsWith(QByteArray("\0<", 2)))
        name = "UTF-16BE";
    else if (start.startsWith("<?xml")) {
        const QByteArray declaration = start.left(start.indexOf("?>"));
        const int key = declaration.indexOf("encoding");
        const int from = declaration.indexOf(declaration.contains('"') ? '"' : '\'', key) + 1;
        if (key >= 0 && from > 0)
            name = declaration.mid(from, declaration.indexOf(declaration.at(from - 1), from) - from);
    }
    const QTextCodec* codec = QTextCodec::codecForName(name);
    if (!codec) {
        fail(tr("its encoding \"%1\" is unknown").arg(QString::fromLatin1(name.left(longestEntity))));
        return false;
    }
    decoder.reset(codec->makeDecoder());
    return true;
}

bool XmlScanner::startsWith(QLatin1String markup)
{
    while (left() < markup.size() && fill())
        ;
    return QStringView(buffer).mid(begin).startsWith(markup);
}

int XmlScanner::find(QLatin1String what, int from)
{
    for (;;) {
        const int found = buffer.indexOf(what, begin + from);
        if (found >= 0)
            return found - begin;
        from = qMax(from, left() - what.size() + 1);
        if (!fill()) {
            failAtEnd();
            return -1;
        }
    }
}

/// The offset of the ">" that ends the tag at the start of the rest, -1 on a failure.
int XmlScanner::findTagEnd(const QString& nestedFault)
{
    ushort quote = 0;
    for (int i = 1;; ++i) {
        if (i >= left() && !fill()) {
            failAtEnd();
            return -1;
        }
        const ushort c = at(i);
        if (c == '<') {
            fail(nestedFault);
            return -1;
        }
        if (quote != 0)
            quote = c == quote ? 0 : quote;
        else if (c == '"' || c == '\'')
            quote = c;
        else if (c == '>')
            return i;
    }
}

/// The offset of the first character that is no blank, -1 at the end of the document.
int XmlScanner::afterBlanks()
{
    for (int i = 0;; ++i) {
        if (i >= left() && !fill())
            return -1;
        if (!isBlank(at(i)))
            return i;
    }
}

XmlScanner::Token XmlScanner::next()
{
    if (!failure.isEmpty())
        return Failed;
    if (isSelfClosed) {
        isSelfClosed = false;
        return EndElement;
    }
    for (;;) {
        const int start = afterBlanks();
        if (start < 0)
            return open.isEmpty() && isRootSeen && failure.isEmpty() ? EndOfDocument : failAtEnd();
        const bool isMarkup = at(start) == '<';
        if (open.isEmpty() && !isMarkup)
            return fail(isRootSeen ? badMarkup() : tr("it is no XML file"));
        if (isMarkup)
            begin += start;
        const Token token = readContent();
        if (token != EndOfDocument)
            return token;
    }
}

/// The token at the start of the rest; EndOfDocument after something that says nothing.
XmlScanner::Token XmlScanner::readContent()
{
    if (at(0) != '<') {
        const int end = find(QLatin1String("<"), 0);
        if (end < 0)
            return Failed;
        textValue = decoded(0, end, false);
        begin += end;
        return failure.isEmpty() ? Text : Failed;
    }
    if (left() < 2 && !fill())
        return failAtEnd();
    switch (at(1)) {
    case '/':
        return readEndTag();
    case '!':
        if (!open.isEmpty() && startsWith(QLatin1String("<![CDATA[")))
            return readCData();
        return skipProlog() ? EndOfDocument : Failed;
    case '?':
        return skipProlog() ? EndOfDocument : Failed;
    default:
        return readStartTag();
    }
}

XmlScanner::Token XmlScanner::readCData()
{
    constexpr int from = 9;
    const int end = find(QLatin1String("]]>"), from);
    if (end < 0)
        return Failed;
    textValue = QStringView(buffer).mid(begin + from, end - from);
    begin += end + 3;
    return Text;
}

/// Goes over a comment, an instruction or the document type.
bool XmlScanner::skipProlog()
{
    int end = -1;
    int size = 1;
    if (startsWith(QLatin1String("<!--"))) {
        end = find(QLatin1String("-->"), 4);
        size = 3;
    } else if (startsWith(QLatin1String("<?"))) {
        end = find(QLatin1String("?>"), 2);
        size = 2;
    } else if (!isRootSeen && startsWith(QLatin1String("<!DOCTYPE"))) {
        end = findTagEnd(tr("it defines entities of its own, which no experiment does"));
    } else {
        fail(badMarkup());
    }
    if (end < 0)
        return false;
    begin += end + size;
    return true;
}

XmlScanner::Token XmlScanner::readStartTag()
{
    if (open.isEmpty() && isRootSeen)
        return fail(badMarkup());
    int end = findTagEnd(badMarkup());
    if (end < 0)
        return Failed;
    const int next = end + 1;
    isSelfClosed = at(end - 1) == '/';
    if (isSelfClosed)
        --end;
    int i = 1;
    while (i < end && !isBlank(at(i)))
        ++i;
    elementName = QStringView(buffer).mid(begin + 1, i - 1);
    if (elementName.isEmpty() || !readAttributes(i, end))
        return fail(badMarkup());
    isRootSeen = true;
    if (!isSelfClosed) {
        if (open.size() == maxDepth)
            return fail(tr("its elements stand too deep inside each other"));
        open.append(elementName.toString());
    }
    begin += next;
    return StartElement;
}

bool XmlScanner::readAttributes(int i, int end)
{
    attributes.clear();
    for (;;) {
        while (i < end && isBlank(at(i)))
            ++i;
        if (i == end)
            return true;
        const int key = i;
        while (i < end && at(i) != '=' && !isBlank(at(i)))
            ++i;
        const int keyEnd = i;
        while (i < end && isBlank(at(i)))
            ++i;
        if (i == end || keyEnd == key || at(i) != '=')
            return false;
        do
            ++i;
        while (i < end && isBlank(at(i)));
        if (i == end || (at(i) != '"' && at(i) != '\''))
            return false;
        const ushort quote = at(i);
        const int value = ++i;
        while (i < end && at(i) != quote)
            ++i;
        if (i == end || attributes.size() == maxAttributes)
            return false;
        const QStringView keyText = QStringView(buffer).mid(begin + key, keyEnd - key);
        for (const Attribute& other : qAsConst(attributes)) {
            if (other.key == keyText)
                return false;
        }
        attributes.append({keyText, decoded(value, i, true)});
        ++i;
        if (!failure.isEmpty() || (i < end && !isBlank(at(i))))
            return false;
    }
}

XmlScanner::Token XmlScanner::readEndTag()
{
    int end = findTagEnd(badMarkup());
    if (end < 0)
        return Failed;
    const int next = end + 1;
    while (isBlank(at(end - 1)))
        --end;
    if (open.isEmpty() || QStringView(buffer).mid(begin + 2, end - 2) != open.constLast())
        return fail(badMarkup());
    open.removeLast();
    begin += next;
    return EndElement;
}

/// Puts what a stretch of the rest says in its own place, which is never shorter.
QStringView XmlScanner::decoded(int from, int end, bool isAttribute)
{
    const QStringView raw = QStringView(buffer).mid(begin + from, end - from);
    const auto needsWork = [](QChar c) { return c == u'&' || c == u'\r' || c == u'\n' || c == u'\t'; };
    if (std::none_of(raw.begin(), raw.end(), needsWork))
        return raw;
    QChar* const start = buffer.data() + begin + from;
    QChar* out = start;
    const QChar* const stop = start + raw.size();
    for (const QChar* in = start; in != stop; ++in) {
        if (*in == u'&') {
            const QStringView rest(in + 1, qMin<qptrdiff>(stop - in - 1, longestEntity));
            const int length = rest.indexOf(u';');
            const uint value = length > 0 ? entityValue(rest.left(length)) : 0;
            if (value == 0) {
                fail(badMarkup());
                return {};
            }
            if (QChar::requiresSurrogates(value)) {
                *out++ = QChar(QChar::highSurrogate(value));
                *out++ = QChar(QChar::lowSurrogate(value));
            } else {
                *out++ = QChar(ushort(value));
            }
            in += length + 1;
        } else if (*in == u'\r' && in + 1 != stop && in[1] == u'\n') {
            continue; // the line feed stands for both
        } else if (isAttribute && isBlank(in->unicode())) {
            *out++ = u' ';
        } else {
            *out++ = *in == u'\r' ? QChar(u'\n') : *in;
        }
    }
    return QStringView(start, out - start);
}

void XmlScanner::skipElement()
{
    int depth = 1;
    while (depth > 0) {
        switch (next()) {
        case StartElement:
            ++depth;
            break;
        case EndElement:
            --depth;
            break;
        case Text:
            break;
        case EndOfDocument:
        case Failed:
            return;
        }
    }
}
