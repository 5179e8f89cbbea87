// A formula front end for hosts of the Nox library: infix text to factory nodes, and
// factory nodes back to text. The library itself reads and writes no text; this lives
// with the example hosts.
//
// Syntax, loosest binding first:
//   sum        term (('+' | '-') term)*
//   term       unary (('*' | '/') unary)*
//   unary      '-' unary | power
//   power      primary ('^' exponent)?      exponent: an integer, optionally signed or
//                                           in parentheses, e.g. x^2, x^-1, x^(-3)
//   primary    number | variable | name '(' arguments ')' | '(' sum ')'
// Numbers are decimal (2, 0.5, .5, 1e-3); `pi` is the constant; every other name that is
// not a function is a variable. Functions: sqrt log (base 10) ln exp abs ceil floor round
// sin cos tan asin acos atan sinh cosh tanh asinh acosh atanh (one argument), min max
// (two or more), mod (two), root(x, k) (k an integer).
//
// The tree is built as written: a - b is the sum of a and (-1)*b, -x is the product
// (-1)*x, a minus sign before a number makes a negative constant, and a chain of + or of
// * becomes one node with as many children; parentheses keep their group as one child.
// The printer writes a node the same way back, with no simplification, so that parsing
// printed text gives a graph of the same shape.
#ifndef NOX_EXAMPLES_FORMULA_H
#define NOX_EXAMPLES_FORMULA_H

#include <Nox.h>

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace formula {

/// Where and why text could not be read: `position` is the 0-based column in the text.
struct ParseError {
    std::size_t position = 0;
    std::string message;
};

/// Reads formulas into one factory. Variables are shared by every formula read through
/// the same parser: a name met for the first time creates a variable of that name.
class Parser {
public:
    explicit Parser(NoxFactory &factory);

    /// The formula in `text` as a new expression of the factory; null with `error` filled
    /// in when the text is not a formula (then no node and no variable is created).
    NoxExpression *Parse(const std::string &text, ParseError &error);
    /// An equation `lhs = rhs` as the expression lhs - rhs, or a formula without `=` as
    /// itself (the equation formula = 0).
    NoxExpression *ParseEquation(const std::string &text, ParseError &error);

    /// The variable of that name, created when new.
    NoxVariable *Variable(const std::string &name);
    /// The variable of that name, null when no formula has used it.
    NoxVariable *FindVariable(const std::string &name) const;
    /// Every variable made by this parser, in creation order.
    const std::vector<NoxVariable *> &Variables() const { return variables; }

    /// Deepest nesting of parentheses, function calls and signs accepted, so that no text
    /// can exhaust the stack.
    static constexpr int MaxDepth = 200;

private:
    NoxFactory &factory;
    std::vector<NoxVariable *> variables;
    std::map<std::string, NoxVariable *> byName;
};

/// True when `name` is a function of the syntax (or the constant pi), so it cannot name a
/// variable.
bool IsReservedName(const std::string &name);

/// The text of a node and its sub-graph, with the parentheses that the syntax needs. A
/// shared sub-graph is written at each place it occurs. When `maxLength` is non-zero the
/// text is cut after that many characters and ends with "...". Nodes the syntax has no
/// form for (constants that are not numbers, booleans, black boxes) are written in a
/// readable form that the parser does not read back.
std::string Print(NoxExpression *node, std::size_t maxLength = 0);

/// The shortest decimal text that reads back as exactly `x` ("2", "0.1", "-1.5e-07").
std::string FormatNumber(double x);

/// A message for a user: the message, then the text and a caret under the column of
/// the error, each line indented by `indent`.
std::string Describe(const std::string &text, const ParseError &error,
                     const std::string &indent = "  ");

} // namespace formula

#endif
