#include "data/formula.h"

#include <muParser.h>

#include <QCoreApplication>

#include <array>
#include <cmath>
#include <limits>

struct Formula::Parts
{
    mu::Parser parser;
    QStringList variables;
    QStringList names; // of the parameters
    std::array<double, mostParameters> variableValues{};
    std::array<double, mostParameters + 1> parameterValues{}; // the last one takes what is too many
};

namespace {

/// As programs and people write it, made into what the parser reads.
std::string parserText(QString text)
{
    text.replace(QLatin1String("**"), QLatin1String("^"));
    text.replace(QLatin1Char('['), QLatin1Char('(')).replace(QLatin1Char(']'), QLatin1Char(')'));
    text.replace(QChar(0x00b7), QLatin1Char('*')).replace(QChar(0x2212), QLatin1Char('-'));
    text.replace(QChar(0x03c0), QLatin1String("pi"));
    text.replace(QChar(0x00b2), QLatin1String("^2")).replace(QChar(0x00b3), QLatin1String("^3"));
    return text.toStdString();
}

double commonLogarithm(double value)
{
    return std::log10(value);
}

} // namespace

Formula::Formula(const QString& expression, const QStringList& variables)
    : text(expression.trimmed())
    , parts(std::make_unique<Parts>())
{
    parts->variables = variables;
    const auto takeName = [](const char* name, void* user) -> double* {
        auto* const own = static_cast<Parts*>(user);
        own->names.append(QString::fromUtf8(name));
        return &own->parameterValues[size_t(qMin<int>(own->names.size() - 1, mostParameters))];
    };
    try {
        mu::Parser& parser = parts->parser;
        parser.DefineConst("pi", 3.14159265358979323846);
        parser.DefineFun("log", commonLogarithm);
        parser.DefineFun("lg", commonLogarithm);
        for (int i = 0; i < variables.size() && i < mostParameters; ++i)
            parser.DefineVar(variables[i].toStdString(), &parts->variableValues[size_t(i)]);
        parser.SetVarFactory(takeName, parts.get());
        parser.SetExpr(parserText(text));
        parser.Eval(); // the names are known from here on
    } catch (const mu::Parser::exception_type& error) {
        problem = QString::fromStdString(error.GetMsg());
        return;
    }
    if (parts->names.size() > mostParameters)
        problem = QCoreApplication::translate("Formula", "More than %1 parameters.").arg(mostParameters);
}

Formula::~Formula() = default;
Formula::Formula(Formula&&) noexcept = default;
Formula& Formula::operator=(Formula&&) noexcept = default;

QStringList Formula::parameters() const
{
    return parts->names;
}

bool Formula::uses(const QString& variable) const
{
    if (!isValid())
        return false;
    try {
        return parts->parser.GetUsedVar().count(variable.toStdString()) > 0;
    } catch (const mu::Parser::exception_type&) {
        return false;
    }
}

double Formula::value(const double* variableValues, const double* parameterValues) const
{
    if (!isValid())
        return std::numeric_limits<double>::quiet_NaN();
    for (int i = 0; i < parts->variables.size(); ++i)
        parts->variableValues[size_t(i)] = variableValues[i];
    for (int i = 0; i < parts->names.size(); ++i)
        parts->parameterValues[size_t(i)] = parameterValues[i];
    try {
        return parts->parser.Eval();
    } catch (const mu::Parser::exception_type&) {
        return std::numeric_limits<double>::quiet_NaN();
    }
}
