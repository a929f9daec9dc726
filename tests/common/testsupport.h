#pragma once

#include <QMutex>
#include <QStringList>
#include <QTemporaryDir>
#include <QTest>

#include <tuple>

/// Turns every warning that a test did not announce into a failure: failures() is then not empty.
class WarningGuard
{
public:
    WarningGuard();
    ~WarningGuard();

    /// A warning that contains `part` is expected from now on.
    void expect(const QString& part);
    /// The unexpected warnings so far.
    QStringList failures() const;

private:
    static void handle(QtMsgType type, const QMessageLogContext& context, const QString& message);

    mutable QMutex mutex;
    QStringList expected;
    QStringList unexpected;
    QtMessageHandler previous = nullptr;
};

/// The folder where the program keeps what it has not finished is empty for each test, and nobody's own.
class OwnState
{
public:
    OwnState();

private:
    QTemporaryDir folder;
};

/// A test class with a guard around each of its test functions, between begin() and finish().
class GuardedTest : public QObject
{
    Q_OBJECT

protected:
    virtual void begin() {}
    virtual void finish() {}

    QScopedPointer<WarningGuard> guard;
    QScopedPointer<OwnState> ownState;

private Q_SLOTS:
    void init();
    void cleanup();
};

/// The columns of a table: columns<int, QString>({"size", "text"}).
template<class... Types> void columns(std::initializer_list<const char*> names)
{
    Q_ASSERT(names.size() == sizeof...(Types));
    const char* const* name = names.begin();
    (QTest::addColumn<Types>(*name++), ...);
}

/// A row of a table: the values in the order of the columns.
template<class... Values> void row(const char* name, const Values&... values)
{
    (QTest::newRow(name) << ... << values);
}

/// The values of a row: auto [size, text] = fetched<int, QString>({"size", "text"}).
template<class... Values> std::tuple<Values...> fetched(std::initializer_list<const char*> names)
{
    std::tuple<Values...> row;
    const char* const* name = names.begin();
    const auto fetch = [&name](auto& value) {
        using Value = std::decay_t<decltype(value)>;
        value = *static_cast<Value*>(QTest::qData(*name++, qMetaTypeId<Value>()));
    };
    std::apply([&](Values&... values) { (fetch(values), ...); }, row);
    return row;
}
