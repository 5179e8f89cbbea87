// Infix text to Nox factory nodes and back. The parser first reads the whole text into a
// small syntax tree of its own, and only when the text is well formed builds the nodes:
// a text with an error leaves the factory untouched.
#include "Formula.h"

#include <cctype>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

namespace formula {

namespace {

// ---- Function table ----

struct FunctionInfo {
    const char *name;
    NoxExpressionType type;
    int minArgs; // fewest arguments
    int maxArgs; // most arguments, -1 for no limit
};

// Every function of the syntax with the node type it makes. root takes an integer
// literal as its second argument; min and max take any number from two on.
const FunctionInfo functionTable[] = {
    {"sqrt", NoxSqrtExpr, 1, 1},   {"log", NoxLogExpr, 1, 1},     {"ln", NoxLnExpr, 1, 1},
    {"exp", NoxExpExpr, 1, 1},     {"abs", NoxAbsExpr, 1, 1},     {"ceil", NoxCeilExpr, 1, 1},
    {"floor", NoxFloorExpr, 1, 1}, {"round", NoxRoundExpr, 1, 1}, {"sin", NoxSinExpr, 1, 1},
    {"cos", NoxCosExpr, 1, 1},     {"tan", NoxTanExpr, 1, 1},     {"asin", NoxAsinExpr, 1, 1},
    {"acos", NoxAcosExpr, 1, 1},   {"atan", NoxAtanExpr, 1, 1},   {"sinh", NoxSinhExpr, 1, 1},
    {"cosh", NoxCoshExpr, 1, 1},   {"tanh", NoxTanhExpr, 1, 1},   {"asinh", NoxASinhExpr, 1, 1},
    {"acosh", NoxACoshExpr, 1, 1}, {"atanh", NoxATanhExpr, 1, 1}, {"min", NoxMinExpr, 2, -1},
    {"max", NoxMaxExpr, 2, -1},    {"mod", NoxModExpr, 2, 2},     {"root", NoxRootExpr, 2, 2},
};

const FunctionInfo *FindFunction(const std::string &name) {
    for (const FunctionInfo &f : functionTable)
        if (name == f.name)
            return &f;
    return nullptr;
}

const FunctionInfo *FindFunction(NoxExpressionType type) {
    for (const FunctionInfo &f : functionTable)
        if (type == f.type)
            return &f;
    return nullptr;
}

const double pi = 3.141592653589793;

// ---- Tokens ----

enum class Tok { Number, Name, Plus, Minus, Star, Slash, Caret, LParen, RParen, Comma, Equals, End };

struct Token {
    Tok kind = Tok::End;
    std::size_t pos = 0;
    std::string text;      // the characters of a number or a name
    double number = 0.0;   // value of a number
    bool integral = false; // a number written with digits only
};

bool IsNameStart(char c) { return std::isalpha(static_cast<unsigned char>(c)) || c == '_'; }
bool IsNameChar(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Splits the whole text into tokens; false with the error at the first character that
// starts no token.
bool Tokenize(const std::string &s, std::vector<Token> &out, ParseError &error) {
    std::size_t i = 0;
    const std::size_t n = s.size();
    while (true) {
        while (i < n && std::isspace(static_cast<unsigned char>(s[i])))
            ++i;
        Token t;
        t.pos = i;
        if (i == n) {
            t.kind = Tok::End;
            out.push_back(t);
            return true;
        }
        const char c = s[i];
        if (IsDigit(c) || (c == '.' && i + 1 < n && IsDigit(s[i + 1]))) {
            std::size_t j = i;
            bool integral = true;
            while (j < n && IsDigit(s[j]))
                ++j;
            if (j < n && s[j] == '.') {
                integral = false;
                ++j;
                while (j < n && IsDigit(s[j]))
                    ++j;
            }
            if (j < n && (s[j] == 'e' || s[j] == 'E')) {
                std::size_t k = j + 1;
                if (k < n && (s[k] == '+' || s[k] == '-'))
                    ++k;
                if (k >= n || !IsDigit(s[k])) {
                    error.position = j;
                    error.message = "the exponent of this number has no digits";
                    return false;
                }
                while (k < n && IsDigit(s[k]))
                    ++k;
                integral = false;
                j = k;
            }
            t.kind = Tok::Number;
            t.text = s.substr(i, j - i);
            t.integral = integral;
            t.number = std::strtod(t.text.c_str(), nullptr);
            if (!std::isfinite(t.number)) {
                error.position = i;
                error.message = "number too large";
                return false;
            }
            i = j;
        } else if (IsNameStart(c)) {
            std::size_t j = i;
            while (j < n && IsNameChar(s[j]))
                ++j;
            t.kind = Tok::Name;
            t.text = s.substr(i, j - i);
            i = j;
        } else {
            switch (c) {
            case '+': t.kind = Tok::Plus; break;
            case '-': t.kind = Tok::Minus; break;
            case '*': t.kind = Tok::Star; break;
            case '/': t.kind = Tok::Slash; break;
            case '^': t.kind = Tok::Caret; break;
            case '(': t.kind = Tok::LParen; break;
            case ')': t.kind = Tok::RParen; break;
            case ',': t.kind = Tok::Comma; break;
            case '=': t.kind = Tok::Equals; break;
            default: {
                error.position = i;
                const unsigned char u = static_cast<unsigned char>(c);
                char buffer[64];
                if (std::isprint(u))
                    std::snprintf(buffer, sizeof buffer, "unexpected character '%c'", c);
                else
                    std::snprintf(buffer, sizeof buffer, "unexpected character (byte 0x%02x)", u);
                error.message = buffer;
                return false;
            }
            }
            ++i;
        }
        out.push_back(t);
    }
}

// ---- Syntax tree ----

struct Ast {
    enum Kind { Number, Variable, Call, Sum, Product, Quotient, Power } kind = Number;
    double number = 0.0;             // Number
    std::string name;                // Variable
    const FunctionInfo *function{};  // Call
    int integer = 0;                 // Power exponent, root degree
    std::vector<std::unique_ptr<Ast>> kids;
};
using AstPtr = std::unique_ptr<Ast>;

AstPtr MakeNumber(double x) {
    AstPtr a(new Ast);
    a->kind = Ast::Number;
    a->number = x;
    return a;
}

AstPtr MakeNode(Ast::Kind kind) {
    AstPtr a(new Ast);
    a->kind = kind;
    return a;
}

// -a: a number changes sign, anything else becomes the product (-1)*a.
AstPtr Negate(AstPtr a) {
    if (a->kind == Ast::Number) {
        a->number = -a->number;
        return a;
    }
    AstPtr p = MakeNode(Ast::Product);
    p->kids.push_back(MakeNumber(-1.0));
    p->kids.push_back(std::move(a));
    return p;
}

// One node for a chain of operands: the operand itself when there is only one.
AstPtr MakeChain(Ast::Kind kind, std::vector<AstPtr> &items) {
    if (items.size() == 1)
        return std::move(items[0]);
    AstPtr a = MakeNode(kind);
    a->kids = std::move(items);
    items.clear();
    return a;
}

class TextParser {
public:
    explicit TextParser(const std::vector<Token> &t) : tokens(t) {}

    // sum ('=' sum)? when `allowEquals`, then the end of the text.
    AstPtr ParseAll(bool allowEquals, ParseError &error) {
        err = &error;
        if (Peek().kind == Tok::End)
            return Fail(Peek().pos, "the formula is empty");
        AstPtr lhs = ParseSum();
        if (!lhs)
            return nullptr;
        if (Peek().kind == Tok::Equals) {
            if (!allowEquals)
                return Fail(Peek().pos, "'=' is only allowed in an equation");
            Next();
            if (Peek().kind == Tok::End)
                return Fail(Peek().pos, "the right-hand side of '=' is missing");
            AstPtr rhs = ParseSum();
            if (!rhs)
                return nullptr;
            if (Peek().kind == Tok::Equals)
                return Fail(Peek().pos, "an equation has only one '='");
            if (!AtEnd())
                return nullptr;
            // lhs - rhs; a right-hand side 0 leaves lhs alone, and a sum on the left
            // takes the negated right-hand side as one more term.
            if (rhs->kind == Ast::Number && rhs->number == 0.0)
                return lhs;
            AstPtr negated = Negate(std::move(rhs));
            if (lhs->kind == Ast::Sum && !lhsGrouped) {
                lhs->kids.push_back(std::move(negated));
                return lhs;
            }
            std::vector<AstPtr> items;
            items.push_back(std::move(lhs));
            items.push_back(std::move(negated));
            return MakeChain(Ast::Sum, items);
        }
        if (!AtEnd())
            return nullptr;
        return lhs;
    }

private:
    const Token &Peek() const { return tokens[index]; }
    const Token &Next() { return tokens[index < tokens.size() - 1 ? index++ : index]; }

    AstPtr Fail(std::size_t pos, const std::string &message) {
        err->position = pos;
        err->message = message;
        return nullptr;
    }

    bool AtEnd() {
        const Token &t = Peek();
        if (t.kind == Tok::End)
            return true;
        if (t.kind == Tok::RParen)
            Fail(t.pos, "')' without a matching '('");
        else
            Fail(t.pos, "expected an operator or the end of the formula");
        return false;
    }

    // Guards recursion: every operand passes through ParseUnary, so counting its levels
    // bounds the nesting of signs, parentheses and calls alike.
    struct DepthGuard {
        TextParser &p;
        explicit DepthGuard(TextParser &parser) : p(parser) { ++p.depth; }
        ~DepthGuard() { --p.depth; }
    };
    bool TooDeep(std::size_t pos) {
        if (depth <= Parser::MaxDepth)
            return false;
        Fail(pos, "the formula is nested too deeply");
        return true;
    }

    AstPtr ParseSum() {
        const std::size_t start = index;
        std::vector<AstPtr> terms;
        AstPtr first = ParseTerm();
        if (!first)
            return nullptr;
        terms.push_back(std::move(first));
        while (Peek().kind == Tok::Plus || Peek().kind == Tok::Minus) {
            const bool minus = Next().kind == Tok::Minus;
            AstPtr t = ParseTerm();
            if (!t)
                return nullptr;
            terms.push_back(minus ? Negate(std::move(t)) : std::move(t));
        }
        lhsGrouped = tokens[start].kind == Tok::LParen && terms.size() == 1;
        return MakeChain(Ast::Sum, terms);
    }

    AstPtr ParseTerm() {
        std::vector<AstPtr> factors;
        AstPtr first = ParseUnary();
        if (!first)
            return nullptr;
        factors.push_back(std::move(first));
        while (Peek().kind == Tok::Star || Peek().kind == Tok::Slash) {
            const bool divide = Next().kind == Tok::Slash;
            AstPtr f = ParseUnary();
            if (!f)
                return nullptr;
            if (divide) {
                AstPtr q = MakeNode(Ast::Quotient);
                q->kids.push_back(MakeChain(Ast::Product, factors));
                q->kids.push_back(std::move(f));
                factors.clear();
                factors.push_back(std::move(q));
            } else {
                factors.push_back(std::move(f));
            }
        }
        return MakeChain(Ast::Product, factors);
    }

    AstPtr ParseUnary() {
        DepthGuard guard(*this);
        if (TooDeep(Peek().pos))
            return nullptr;
        if (Peek().kind == Tok::Minus) {
            Next();
            AstPtr a = ParseUnary();
            return a ? Negate(std::move(a)) : nullptr;
        }
        if (Peek().kind == Tok::Plus)
            return Fail(Peek().pos, "a '+' sign must follow an operand");
        return ParsePower();
    }

    AstPtr ParsePower() {
        AstPtr base = ParsePrimary();
        if (!base)
            return nullptr;
        if (Peek().kind != Tok::Caret)
            return base;
        Next();
        int k = 0;
        if (!ParseInteger(k, "the exponent of ^ must be an integer (write exp(y*ln(x)) for "
                             "other powers)"))
            return nullptr;
        if (Peek().kind == Tok::Caret)
            return Fail(Peek().pos, "write (a^b)^c: chained powers need parentheses");
        AstPtr p = MakeNode(Ast::Power);
        p->integer = k;
        p->kids.push_back(std::move(base));
        return p;
    }

    // An integer literal, optionally signed, optionally in parentheses.
    bool ParseInteger(int &k, const char *message) {
        const std::size_t pos = Peek().pos;
        bool paren = false;
        if (Peek().kind == Tok::LParen) {
            paren = true;
            Next();
        }
        bool negative = false;
        if (Peek().kind == Tok::Minus || Peek().kind == Tok::Plus) {
            negative = Next().kind == Tok::Minus;
        }
        const Token &t = Peek();
        if (t.kind != Tok::Number || !t.integral) {
            Fail(t.kind == Tok::End ? t.pos : pos, message);
            return false;
        }
        if (t.number > static_cast<double>(INT_MAX)) {
            Fail(t.pos, "integer out of range");
            return false;
        }
        k = static_cast<int>(t.number);
        if (negative)
            k = -k;
        Next();
        if (paren) {
            if (Peek().kind != Tok::RParen) {
                Fail(Peek().pos, "missing ')'");
                return false;
            }
            Next();
        }
        return true;
    }

    AstPtr ParsePrimary() {
        const Token &t = Peek();
        switch (t.kind) {
        case Tok::Number:
            Next();
            return MakeNumber(t.number);
        case Tok::LParen: {
            Next();
            if (Peek().kind == Tok::RParen)
                return Fail(Peek().pos, "empty parentheses");
            AstPtr inner = ParseSum();
            if (!inner)
                return nullptr;
            if (Peek().kind != Tok::RParen)
                return Fail(Peek().pos, "missing ')'");
            Next();
            return inner;
        }
        case Tok::Name:
            return ParseName();
        case Tok::End:
            return Fail(t.pos, "the formula ends where an operand is expected");
        case Tok::RParen:
            return Fail(t.pos, "expected an operand before ')'");
        default:
            return Fail(t.pos, "expected a number, a variable, a function or '('");
        }
    }

    AstPtr ParseName() {
        const Token &t = Next();
        const FunctionInfo *f = FindFunction(t.text);
        if (Peek().kind != Tok::LParen) {
            if (f)
                return Fail(t.pos, "'" + t.text + "' is a function: write " + t.text + "(...)");
            if (t.text == "pi")
                return MakeNumber(pi);
            AstPtr v = MakeNode(Ast::Variable);
            v->name = t.text;
            return v;
        }
        if (!f)
            return Fail(t.pos, "unknown function '" + t.text + "'");
        Next(); // '('
        AstPtr call = MakeNode(Ast::Call);
        call->function = f;
        if (f->type == NoxRootExpr) {
            AstPtr radicand = ParseSum();
            if (!radicand)
                return nullptr;
            if (Peek().kind != Tok::Comma)
                return Fail(Peek().pos, "root takes 2 arguments: root(x, k)");
            Next();
            int k = 0;
            if (!ParseInteger(k, "the degree of root must be an integer"))
                return nullptr;
            call->integer = k;
            call->kids.push_back(std::move(radicand));
        } else {
            while (true) {
                if (Peek().kind == Tok::RParen && call->kids.empty())
                    return Fail(Peek().pos, "expected an argument");
                AstPtr arg = ParseSum();
                if (!arg)
                    return nullptr;
                call->kids.push_back(std::move(arg));
                if (Peek().kind != Tok::Comma)
                    break;
                Next();
            }
            const int n = static_cast<int>(call->kids.size());
            if (n < f->minArgs || (f->maxArgs >= 0 && n > f->maxArgs)) {
                std::string need;
                if (f->maxArgs < 0)
                    need = "at least " + std::to_string(f->minArgs) + " arguments";
                else
                    need = std::to_string(f->minArgs) +
                           (f->minArgs == 1 ? " argument" : " arguments");
                return Fail(t.pos, t.text + " takes " + need + ", not " + std::to_string(n));
            }
        }
        if (Peek().kind != Tok::RParen)
            return Fail(Peek().pos, "missing ')'");
        Next();
        return call;
    }

    const std::vector<Token> &tokens;
    std::size_t index = 0;
    int depth = 0;
    bool lhsGrouped = false;
    ParseError *err = nullptr;
};

} // namespace

// ---- Parser ----

Parser::Parser(NoxFactory &f) : factory(f) {}

NoxVariable *Parser::FindVariable(const std::string &name) const {
    auto it = byName.find(name);
    return it == byName.end() ? nullptr : it->second;
}

NoxVariable *Parser::Variable(const std::string &name) {
    if (NoxVariable *v = FindVariable(name))
        return v;
    NoxVariable *v = factory.CreateVariable();
    if (!v)
        return nullptr;
    v->SetName(name);
    variables.push_back(v);
    byName[name] = v;
    return v;
}

namespace {

// Makes the nodes of a syntax tree; null when the factory gives null.
class Builder {
public:
    Builder(NoxFactory &f, Parser &p) : factory(f), parser(p) {}

    NoxExpression *Build(const Ast &a) {
        switch (a.kind) {
        case Ast::Number:
            return factory.CreateRealConstant(a.number);
        case Ast::Variable:
            return parser.Variable(a.name);
        case Ast::Sum:
        case Ast::Product: {
            std::vector<NoxExpression *> kids;
            for (const AstPtr &k : a.kids) {
                NoxExpression *e = Build(*k);
                if (!e)
                    return nullptr;
                kids.push_back(e);
            }
            const int n = static_cast<int>(kids.size());
            return a.kind == Ast::Sum ? factory.CreateSum(n, kids.data())
                                      : factory.CreateProduct(n, kids.data());
        }
        case Ast::Quotient: {
            NoxExpression *l = Build(*a.kids[0]);
            NoxExpression *r = l ? Build(*a.kids[1]) : nullptr;
            return r ? factory.CreateQuotient(l, r) : nullptr;
        }
        case Ast::Power: {
            NoxExpression *base = Build(*a.kids[0]);
            return base ? factory.CreatePower(base, a.integer) : nullptr;
        }
        case Ast::Call: {
            std::vector<NoxExpression *> kids;
            for (const AstPtr &k : a.kids) {
                NoxExpression *e = Build(*k);
                if (!e)
                    return nullptr;
                kids.push_back(e);
            }
            const NoxExpressionType t = a.function->type;
            const int n = static_cast<int>(kids.size());
            switch (t) {
            case NoxMinExpr:
            case NoxMaxExpr:
                return factory.CreateAlgebraicOperator(t, n, kids.data());
            case NoxModExpr:
                return factory.CreateMod(kids[0], kids[1]);
            case NoxRootExpr:
                return factory.CreateRoot(kids[0], a.integer);
            case NoxSqrtExpr:
            case NoxLogExpr:
            case NoxLnExpr:
            case NoxExpExpr:
            case NoxAbsExpr:
            case NoxCeilExpr:
            case NoxFloorExpr:
            case NoxRoundExpr:
                return factory.CreateUnaryOperator(t, kids[0]);
            default:
                return factory.CreateTrigonometricOperator(t, kids[0]);
            }
        }
        }
        return nullptr;
    }

private:
    NoxFactory &factory;
    Parser &parser;
};

NoxExpression *ParseText(NoxFactory &factory, Parser &parser, const std::string &text,
                         bool equation, ParseError &error) {
    std::vector<Token> tokens;
    if (!Tokenize(text, tokens, error))
        return nullptr;
    TextParser p(tokens);
    AstPtr ast = p.ParseAll(equation, error);
    if (!ast)
        return nullptr;
    NoxExpression *e = Builder(factory, parser).Build(*ast);
    if (!e) {
        error.position = 0;
        error.message = "the model ran out of memory";
    }
    return e;
}

} // namespace

NoxExpression *Parser::Parse(const std::string &text, ParseError &error) {
    return ParseText(factory, *this, text, false, error);
}

NoxExpression *Parser::ParseEquation(const std::string &text, ParseError &error) {
    return ParseText(factory, *this, text, true, error);
}

bool IsReservedName(const std::string &name) {
    return name == "pi" || FindFunction(name) != nullptr;
}

// ---- Printer ----

std::string FormatNumber(double x) {
    if (std::isnan(x))
        return "nan";
    if (std::isinf(x))
        return x > 0 ? "inf" : "-inf";
    char buffer[40];
    // Whole numbers of moderate size are written out in full (1000, not 1e+03).
    if (x == std::floor(x) && std::fabs(x) < 1e16) {
        std::snprintf(buffer, sizeof buffer, "%.0f", x);
        return buffer;
    }
    for (int precision = 1; precision <= 17; ++precision) {
        std::snprintf(buffer, sizeof buffer, "%.*g", precision, x);
        if (std::strtod(buffer, nullptr) == x)
            break;
    }
    return buffer;
}

namespace {

// How tightly a place binds its operand, loosest first.
// Sum: a + b. Term: a*b, a/b. Unary: -a and negative numbers. Power: a^k. Atom:
// numbers, variables, calls, parenthesised groups.
enum Level { SumLevel, TermLevel, UnaryLevel, PowerLevel, AtomLevel };

const NoxValue *ConstantValue(NoxExpression *e) {
    if (!e || e->GetType() != NoxConstantExpr)
        return nullptr;
    return &e->GetExprValue();
}

bool IsNumberConstant(NoxExpression *e) {
    const NoxValue *v = ConstantValue(e);
    return v && (v->GetType() == NoxRealType || v->GetType() == NoxIntegerType);
}

bool IsNegativeNumber(NoxExpression *e) {
    const NoxValue *v = ConstantValue(e);
    if (!v)
        return false;
    if (v->GetType() == NoxRealType)
        return std::signbit(v->GetAsReal());
    if (v->GetType() == NoxIntegerType)
        return v->GetAsInteger() < 0;
    return false;
}

bool IsMinusOne(NoxExpression *e) {
    const NoxValue *v = ConstantValue(e);
    return v && v->GetType() == NoxRealType && v->GetAsReal() == -1.0;
}

// A product of exactly two children, the first the real constant -1: what the parser
// makes of -a.
bool IsNegation(NoxExpression *e) {
    return e && e->GetType() == NoxProductExpr && e->GetNbOfChildren() == 2 &&
           IsMinusOne(e->GetChild(0));
}

bool IsIntegerConstant(NoxExpression *e, int &k) {
    const NoxValue *v = ConstantValue(e);
    if (!v || v->GetType() != NoxIntegerType)
        return false;
    k = v->GetAsInteger();
    return true;
}

class Printer {
public:
    explicit Printer(std::size_t limit) : maxLength(limit) {}

    std::string Result() {
        if (truncated)
            out += "...";
        return out;
    }

    void Node(NoxExpression *e, Level place) {
        if (Full())
            return;
        if (!e) {
            Put("?");
            return;
        }
        if (++depth > 10000) {
            truncated = true;
            --depth;
            return;
        }
        const bool paren = Binding(e) < place;
        if (paren)
            Put("(");
        Bare(e);
        if (paren)
            Put(")");
        --depth;
    }

private:
    bool Full() const { return truncated; }

    void Put(const std::string &s) {
        if (truncated)
            return;
        out += s;
        if (maxLength && out.size() > maxLength) {
            out.resize(maxLength);
            truncated = true;
        }
    }

    // The loosest place where a node may stand without parentheses.
    Level Binding(NoxExpression *e) {
        switch (e->GetType()) {
        case NoxSumExpr:
            return SumLevel;
        case NoxProductExpr:
            return IsNegation(e) && !IsNumberConstant(e->GetChild(1)) ? UnaryLevel : TermLevel;
        case NoxQuotientExpr:
            return TermLevel;
        case NoxPowerExpr:
            return PowerLevel;
        case NoxConstantExpr:
            return IsNegativeNumber(e) ? UnaryLevel : AtomLevel;
        default:
            return AtomLevel;
        }
    }

    // True when the text of e begins with a minus sign.
    bool StartsWithMinus(NoxExpression *e) {
        for (int guard = 0; e && guard < 10000; ++guard) {
            if (Binding(e) == UnaryLevel && e->GetType() != NoxPowerExpr)
                return true; // a negation or a negative number
            if (e->GetType() != NoxProductExpr && e->GetType() != NoxQuotientExpr)
                return false;
            e = e->GetChild(0);
        }
        return false;
    }

    // The place of the operand of a minus sign: `loosest` unless the operand's text
    // begins with a sign of its own, which is then set apart by parentheses.
    Level OperandPlace(NoxExpression *operand, Level loosest) {
        return StartsWithMinus(operand) ? AtomLevel : loosest;
    }

    void Bare(NoxExpression *e) {
        const NoxExpressionType t = e->GetType();
        const int n = e->GetNbOfChildren();
        switch (t) {
        case NoxVariableExpr:
            Put(static_cast<NoxVariable *>(e)->GetName());
            return;
        case NoxConstantExpr:
            Constant(*ConstantValue(e));
            return;
        case NoxSumExpr:
            for (int i = 0; i < n; ++i) {
                NoxExpression *c = e->GetChild(i);
                if (i == 0) {
                    Node(c, TermLevel);
                } else if (c && c->GetType() == NoxConstantExpr && IsNegativeNumber(c)) {
                    Put(" - ");
                    Constant(c->GetExprValue(), true);
                } else if (IsNegation(c) && !IsNumberConstant(c->GetChild(1))) {
                    Put(" - ");
                    // The operand of a negation in a sum is read as a whole term.
                    NoxExpression *operand = c->GetChild(1);
                    Node(operand, OperandPlace(operand, TermLevel));
                } else {
                    Put(" + ");
                    Node(c, TermLevel);
                }
            }
            return;
        case NoxProductExpr:
            if (IsNegation(e) && !IsNumberConstant(e->GetChild(1))) {
                Put("-");
                NoxExpression *operand = e->GetChild(1);
                Node(operand, OperandPlace(operand, UnaryLevel));
                return;
            }
            for (int i = 0; i < n; ++i) {
                NoxExpression *c = e->GetChild(i);
                if (i > 0)
                    Put("*");
                // The first factor may be a quotient or a signed operand; later ones
                // bind tighter, or they would join the chain.
                if (i == 0)
                    Node(c, c && (c->GetType() == NoxQuotientExpr) ? TermLevel : UnaryLevel);
                else
                    Node(c, PowerLevel);
            }
            return;
        case NoxQuotientExpr: {
            NoxExpression *num = e->GetChild(0);
            const bool chain = num && (num->GetType() == NoxQuotientExpr ||
                                       (num->GetType() == NoxProductExpr && !IsNegation(num)));
            Node(num, chain ? TermLevel : UnaryLevel);
            Put("/");
            Node(e->GetChild(1), PowerLevel);
            return;
        }
        case NoxPowerExpr: {
            Node(e->GetChild(0), AtomLevel);
            int k = 0;
            if (IsIntegerConstant(e->GetChild(1), k)) {
                Put("^" + std::to_string(k));
            } else {
                Put("^(");
                Node(e->GetChild(1), SumLevel);
                Put(")");
            }
            return;
        }
        default:
            break;
        }
        Call(e, t, n);
    }

    void Call(NoxExpression *e, NoxExpressionType t, int n) {
        const char *name = nullptr;
        if (const FunctionInfo *f = FindFunction(t))
            name = f->name;
        else {
            switch (t) {
            case NoxNotExpr: name = "not"; break;
            case NoxOrExpr: name = "or"; break;
            case NoxAndExpr: name = "and"; break;
            case NoxEqualExpr: name = "equal"; break;
            case NoxNotEqualExpr: name = "notequal"; break;
            case NoxImplicationExpr: name = "implies"; break;
            case NoxBlackBoxExpr: name = "blackbox"; break;
            default: name = "?"; break;
            }
        }
        Put(name);
        Put("(");
        for (int i = 0; i < n; ++i) {
            if (i > 0)
                Put(", ");
            NoxExpression *c = e->GetChild(i);
            int k = 0;
            if (t == NoxRootExpr && i == 1 && IsIntegerConstant(c, k))
                Put(std::to_string(k));
            else
                Node(c, SumLevel);
        }
        Put(")");
    }

    // A constant's value; `magnitude` writes a negative number without its sign.
    void Constant(const NoxValue &v, bool magnitude = false) {
        switch (v.GetType()) {
        case NoxRealType: {
            const double x = v.GetAsReal();
            Put(FormatNumber(magnitude ? -x : x));
            return;
        }
        case NoxIntegerType: {
            const long long k = v.GetAsInteger();
            Put(std::to_string(magnitude ? -k : k));
            return;
        }
        case NoxRealIntervalType: {
            const NoxRealInterval r = v.GetAsRealInterval();
            Put("[" + FormatNumber(r.lower) + ", " + FormatNumber(r.upper) + "]");
            return;
        }
        case NoxIntegerIntervalType: {
            const NoxIntegerInterval r = v.GetAsIntegerInterval();
            Put("[" + std::to_string(r.lower) + ", " + std::to_string(r.upper) + "]");
            return;
        }
        case NoxBooleanType: {
            static const char *const names[] = {"false", "true", "any", "nil"};
            const int b = static_cast<int>(v.GetAsBoolean());
            Put(b >= 0 && b <= 3 ? names[b] : "?");
            return;
        }
        case NoxIntegerEnumType:
            Put("{integers}");
            return;
        case NoxRealEnumType:
            Put("{reals}");
            return;
        default:
            Put("undefined");
            return;
        }
    }

    std::string out;
    std::size_t maxLength;
    bool truncated = false;
    int depth = 0;
};

} // namespace

std::string Print(NoxExpression *node, std::size_t maxLength) {
    Printer p(maxLength);
    p.Node(node, SumLevel);
    return p.Result();
}

std::string Describe(const std::string &text, const ParseError &error,
                     const std::string &indent) {
    std::string echo = text;
    for (char &c : echo)
        if (c == '\t' || c == '\n' || c == '\r')
            c = ' ';
    const std::size_t column = error.position < echo.size() ? error.position : echo.size();
    return error.message + "\n" + indent + echo + "\n" + indent + std::string(column, ' ') +
           "^\n";
}

} // namespace formula
