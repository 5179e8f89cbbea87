// Four-valued logic on values: negation, disjunction, conjunction, equivalence,
// exclusive or and implication, each a truth table indexed by the operands' NoxBoolean
// codes (false, true, any, nil).
#include "NoxValueFunctions.h"

namespace {

typedef NoxBoolean TruthTable[4][4];

const NoxBoolean kNotTable[4] = {NoxTrue, NoxFalse, NoxBoolean_Any, NoxBoolean_Nil};

const TruthTable kOrTable = {
    {NoxFalse, NoxTrue, NoxBoolean_Any, NoxBoolean_Nil},
    {NoxTrue, NoxTrue, NoxTrue, NoxBoolean_Nil},
    {NoxBoolean_Any, NoxTrue, NoxBoolean_Any, NoxBoolean_Nil},
    {NoxBoolean_Nil, NoxBoolean_Nil, NoxBoolean_Nil, NoxBoolean_Nil}};

const TruthTable kAndTable = {
    {NoxFalse, NoxFalse, NoxFalse, NoxBoolean_Nil},
    {NoxFalse, NoxTrue, NoxBoolean_Any, NoxBoolean_Nil},
    {NoxFalse, NoxBoolean_Any, NoxBoolean_Any, NoxBoolean_Nil},
    {NoxBoolean_Nil, NoxBoolean_Nil, NoxBoolean_Nil, NoxBoolean_Nil}};

const TruthTable kEqualTable = {
    {NoxTrue, NoxFalse, NoxBoolean_Any, NoxBoolean_Nil},
    {NoxFalse, NoxTrue, NoxBoolean_Any, NoxBoolean_Nil},
    {NoxBoolean_Any, NoxBoolean_Any, NoxBoolean_Any, NoxBoolean_Nil},
    {NoxBoolean_Nil, NoxBoolean_Nil, NoxBoolean_Nil, NoxBoolean_Nil}};

const TruthTable kNotEqualTable = {
    {NoxFalse, NoxTrue, NoxBoolean_Any, NoxBoolean_Nil},
    {NoxTrue, NoxFalse, NoxBoolean_Any, NoxBoolean_Nil},
    {NoxBoolean_Any, NoxBoolean_Any, NoxBoolean_Any, NoxBoolean_Nil},
    {NoxBoolean_Nil, NoxBoolean_Nil, NoxBoolean_Nil, NoxBoolean_Nil}};

// Rows: the premise; columns: the conclusion.
const TruthTable kImplicationTable = {
    {NoxTrue, NoxTrue, NoxTrue, NoxBoolean_Nil},
    {NoxFalse, NoxTrue, NoxBoolean_Any, NoxBoolean_Nil},
    {NoxBoolean_Any, NoxTrue, NoxBoolean_Any, NoxBoolean_Nil},
    {NoxBoolean_Nil, NoxBoolean_Nil, NoxBoolean_Nil, NoxBoolean_Nil}};

// The truth code of an operand that takes part in logic; -1 for one that does not (no
// conversion to a boolean, or a stored boolean code outside the four of the tables).
int TruthCode(const NoxValue &v) {
    if (!v.IsConvertible(NoxBooleanType))
        return -1;
    const int code = v.GetAsBoolean();
    return code >= 0 && code <= 3 ? code : -1;
}

NoxValue Connective(const TruthTable &table, const NoxValue &a, const NoxValue &b) {
    const int p = TruthCode(a);
    const int q = TruthCode(b);
    if (p < 0 || q < 0)
        return NoxValue(NoxBoolean_Nil);
    return NoxValue(table[p][q]);
}

} // namespace

NoxValue NoxNot(const NoxValue &a) {
    const int p = TruthCode(a);
    return NoxValue(p < 0 ? NoxBoolean_Nil : kNotTable[p]);
}

NoxValue NoxOr(const NoxValue &a, const NoxValue &b) { return Connective(kOrTable, a, b); }

NoxValue NoxAnd(const NoxValue &a, const NoxValue &b) { return Connective(kAndTable, a, b); }

NoxValue NoxEqual(const NoxValue &a, const NoxValue &b) { return Connective(kEqualTable, a, b); }

NoxValue NoxNotEqual(const NoxValue &a, const NoxValue &b) {
    return Connective(kNotEqualTable, a, b);
}

NoxValue NoxImplication(const NoxValue &a, const NoxValue &b) {
    return Connective(kImplicationTable, a, b);
}
