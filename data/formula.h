#pragma once

#include <QString>
#include <QStringList>

#include <memory>

/// A formula as a person types it: numbers, + - * / ^ (or **), brackets of both kinds, pi, the usual
/// functions (sin, cos, tan, asin, acos, atan, exp, ln, log and lg to base 10, sqrt, abs, sinh, cosh, tanh,
/// ...), given variables, and names of its own choice for parameters. Angles are in radians. Evaluated by
/// muParser. One object belongs to one thread at a time.
class Formula
{
public:
    static constexpr int mostParameters = 12;

    /// `variables` are what it is a function of; every other name in it is a parameter.
    explicit Formula(const QString& expression, const QStringList& variables = {QStringLiteral("x")});
    ~Formula();
    Formula(Formula&&) noexcept;
    Formula& operator=(Formula&&) noexcept;

    bool isValid() const { return problem.isEmpty(); }
    /// What is wrong and where, a sentence in the parser's words; empty for a valid formula.
    QString error() const { return problem; }
    QString expression() const { return text; }
    /// In the order of their first appearance.
    QStringList parameters() const;
    /// Which of the variables it uses.
    bool uses(const QString& variable) const;
    /// As many values as there are variables and parameters, in their order. Not finite where it has no
    /// value, and for an invalid formula.
    double value(const double* variableValues, const double* parameterValues) const;

private:
    struct Parts;
    QString text;
    QString problem;
    std::unique_ptr<Parts> parts;
};
