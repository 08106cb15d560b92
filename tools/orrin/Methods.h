// The methods a plan file can name: how each is put into the library and which inputs it takes.
#pragma once

#include <string>
#include <vector>

namespace orrin_tool {

/// One method of the plan file.
struct MethodSpec {
    short code;           ///< the library's method code (a representative one for the 2D profiles)
    int family;           ///< m_nFamily
    int sub;              ///< m_nSubMethod
    int targetMethod;     ///< m_nTargetMethod
    int constTF;          ///< m_bConstTF
    const char* variant;  ///< the "variant" key that selects this entry among equal names, or ""
    const char* ownName;  ///< the name of a code the library leaves unnamed, else nullptr
    const char* inputs;   ///< the input fields, space separated; "a|b" takes one of the two
    const char* about;    ///< one line for `orrin methods`

    /// The display name: the library's own (GetNameFromMethod), or ownName.
    std::string name() const;
    /// The input fields, split.
    std::vector<std::string> inputList() const;
};

/// Every method, in the order `orrin methods` lists them.
const std::vector<MethodSpec>& methodTable();

/// Name comparison key: lower case, dots dropped, runs of spaces made one.
std::string methodKey(const std::string& name);

/// The method of that name (compared by methodKey) and variant ("" for the first of the name);
/// nullptr when there is none.
const MethodSpec* findMethod(const std::string& name, const std::string& variant);

/// True when some method has that name, whatever the variant.
bool isMethodName(const std::string& name);

/// The label of a method family, for legends and listings.
const char* familyLabel(int family);

/// The family of a stored method code (continuation stations excluded), 0 when unknown.
int familyOfCode(int code);

/// The kind of value of an input field.
enum class FieldKind { Length, Angle, Rate, Text, Other };
FieldKind fieldKind(const std::string& field);

/// The index of a 2D profile parameter (1 kickoff ... 7 final_hold), 0 for any other field.
int profileIndex(const std::string& field);
/// The field of a profile index.
const char* profileField(int index);

}  // namespace orrin_tool
