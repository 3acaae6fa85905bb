#include <kiln/host/script.h>
#include <kiln/interface.h>
#include <kiln/texmap.h>

#include <charconv>
#include <cmath>
#include <limits>

namespace kiln {

namespace {

std::string described(const FPValue& value) {
    const std::string name = ParamTypeName(value.type);
    const bool vowel = name.find_first_of("aeiou") == 0;
    return (vowel ? "an " : "a ") + name;
}

std::string described(ParamType2 type) {
    FPValue value;
    value.type = type;
    return described(value);
}

bool isWhole(double value) {
    return std::trunc(value) == value && value >= std::numeric_limits<int>::min() &&
           value <= std::numeric_limits<int>::max();
}

bool isReal(const FPValue& value) {
    return value.type == TYPE_FLOAT || value.type == TYPE_DOUBLE;
}

double realOf(const FPValue& value) {
    return value.type == TYPE_FLOAT ? double{value.f} : value.d;
}

// Makes `value` one of `type` where nothing is lost.
bool convert(FPValue& value, ParamType2 type) {
    if (value.type == type) return true;
    const ParamType2 from = value.type;
    const int number = from == TYPE_INT || from == TYPE_BOOL ? value.i : 0;
    switch (type) {
        case TYPE_FLOAT:
            if (from == TYPE_DOUBLE && std::abs(value.d) <= std::numeric_limits<float>::max())
                value.SetFloat(static_cast<float>(value.d));
            else if (from == TYPE_INT && static_cast<double>(static_cast<float>(number)) == number)
                value.SetFloat(static_cast<float>(number));
            else
                return false;
            return true;
        case TYPE_DOUBLE:
            if (from == TYPE_FLOAT)
                value.SetDouble(double{value.f});
            else if (from == TYPE_INT)
                value.SetDouble(number);
            else
                return false;
            return true;
        case TYPE_INT:
            if (from == TYPE_BOOL)
                value.SetInt(number != 0);
            else if (isReal(value) && isWhole(realOf(value)))
                value.SetInt(static_cast<int>(realOf(value)));
            else
                return false;
            return true;
        case TYPE_BOOL:
            if (from != TYPE_INT) return false;
            value.SetBool(number != 0);
            return true;
        case TYPE_INODE:
            if (from != TYPE_VOID) return false;
            value.SetNode(nullptr);
            return true;
        case TYPE_TEXMAP:
            if (from != TYPE_VOID) return false;
            value.SetTexmap(nullptr);
            return true;
        case TYPE_STRING:
            if (from != TYPE_VOID) return false;
            value.SetString(nullptr);
            return true;
        case TYPE_VALUE:
            return from != TYPE_VOID;
        case TYPE_STRING_TAB:
        case TYPE_VOID:
            return false;
    }
    return false;
}

std::string quoted(const std::string& text) {
    return "\"" + text + "\"";
}

/// Puts the arguments of one call in the order of its parameters.
class Arguments {
public:
    Arguments(std::string call, std::span<const FPParamDesc> params)
        : call_(std::move(call)),
          params_(params),
          values_(params.size()),
          given_(params.size(), false) {}

    Status place(const std::vector<ScriptArgument>& arguments) {
        bool keywords = false;
        std::size_t position = 0;
        for (const ScriptArgument& one : arguments) {
            keywords = keywords || !one.keyword.empty();
            if (keywords && one.keyword.empty())
                return failure("an argument without a keyword follows one with a keyword");
            const std::size_t index = keywords ? indexOf(one.keyword) : position++;
            if (keywords && index == params_.size()) return unknownKeyword(one.keyword);
            if (index >= params_.size()) return wrongCount(arguments.size());
            if (given_[index])
                return failure("argument " + quoted(params_[index].name) + " is given twice");
            if (Status status = put(index, one.value); !status) return status;
        }
        for (std::size_t i = 0; i < params_.size(); ++i)
            if (!given_[i] && (params_[i].options & FP_OPTIONAL) == 0)
                return failure("argument " + quoted(params_[i].name) + " is missing");
        return {};
    }

    FPParams& values() { return values_; }

private:
    Status failure(const std::string& what) const { return Status::failure(call_ + ": " + what); }

    Status unknownKeyword(const std::string& keyword) const {
        std::string known;
        for (const FPParamDesc& param : params_)
            known += (known.empty() ? "" : ", ") + quoted(param.name);
        return failure("there is no argument " + quoted(keyword) +
                       (known.empty() ? ", it takes none" : "; it takes " + known));
    }

    Status wrongCount(std::size_t count) const {
        const std::string most = params_.empty() ? "no" : std::to_string(params_.size());
        return failure("takes " + most + (params_.size() == 1 ? " argument" : " arguments") +
                       ", not " + std::to_string(count));
    }

    std::size_t indexOf(const std::string& keyword) const {
        std::size_t index = 0;
        while (index < params_.size() && keyword != params_[index].name) ++index;
        return index;
    }

    Status put(std::size_t index, const FPValue& value) {
        values_[index] = value;
        given_[index] = true;
        if (convert(values_[index], params_[index].type)) return {};
        return failure("argument " + std::to_string(index + 1) + " " + quoted(params_[index].name) +
                       " must be " + described(params_[index].type) + ", not " + described(value));
    }

    std::string call_;
    std::span<const FPParamDesc> params_;
    FPParams values_;
    std::vector<bool> given_;
};

Status invoked(FPInterfaceDesc& target, FunctionID id, FPValue& result, FPParams& params,
               const std::string& call) {
    Interface* const host = GetCOREInterface();
    const FPStatus status = target.Invoke(id, host ? host->GetTime() : 0, result, &params);
    if (status == FPS_NO_SUCH_FUNCTION) return Status::failure(call + ": is not implemented");
    if (status >= FPS_OK) return {};
    const bool hasReason = result.type == TYPE_STRING && result.s && *result.s;
    Status failed = Status::failure(hasReason ? result.s : call + ": failed");
    result.Clear();
    return failed;
}

std::string qualified(const FPInterfaceDesc& target, const char* name) {
    return std::string(target.Name()) + "." + name;
}

}  // namespace

Status callFunction(FPInterfaceDesc& target, const std::string& function,
                    const std::vector<ScriptArgument>& arguments, FPValue& result) {
    result.Clear();
    const FPFunctionDesc* const found = target.FindFunction(function.c_str());
    if (!found)
        return Status::failure(std::string(target.Name()) + ": there is no function " +
                               quoted(function));
    const std::string call = qualified(target, found->name);
    Arguments ordered(call, found->params());
    if (Status status = ordered.place(arguments); !status) return status;
    return invoked(target, found->id, result, ordered.values(), call);
}

Status getProperty(FPInterfaceDesc& target, const std::string& property, FPValue& result) {
    result.Clear();
    const FPPropertyDesc* const found = target.FindProperty(property.c_str());
    if (!found)
        return Status::failure(std::string(target.Name()) + ": there is no property " +
                               quoted(property));
    FPParams none;
    return invoked(target, found->getter, result, none, qualified(target, found->name));
}

Status setProperty(FPInterfaceDesc& target, const std::string& property, const FPValue& value) {
    const FPPropertyDesc* const found = target.FindProperty(property.c_str());
    if (!found)
        return Status::failure(std::string(target.Name()) + ": there is no property " +
                               quoted(property));
    const std::string call = qualified(target, found->name);
    if (found->setter == FP_NO_FUNCTION) return Status::failure(call + ": is read-only");
    FPParams params{value};
    if (!convert(params.front(), found->type))
        return Status::failure(call + ": must be " + described(found->type) + ", not " +
                               described(value));
    FPValue nothing;
    return invoked(target, found->setter, nothing, params, call);
}

std::string signatureOf(const FPInterfaceDesc& target, const FPFunctionDesc& function) {
    std::string text = qualified(target, function.name);
    for (const FPParamDesc& param : function.params())
        text += std::string(" ") + param.name + ":<" + ParamTypeName(param.type) + ">";
    return text + " -> " + ParamTypeName(function.result);
}

std::string printed(const FPValue& value) {
    char text[32];
    switch (value.type) {
        case TYPE_FLOAT:
            return std::string(text, std::to_chars(text, text + sizeof text, value.f).ptr);
        case TYPE_DOUBLE:
            return std::string(text, std::to_chars(text, text + sizeof text, value.d).ptr);
        case TYPE_STRING_TAB: {
            std::string list;
            for (const std::string_view one : value.Strings())
                list += (list.empty() ? "" : ", ") + quoted(std::string(one));
            return "#(" + list + ")";
        }
        case TYPE_INT:
            return std::to_string(value.i);
        case TYPE_BOOL:
            return value.i ? "true" : "false";
        case TYPE_STRING:
            return value.s ? quoted(value.s) : "undefined";
        case TYPE_INODE:
            return value.n ? std::string("$") + value.n->GetName() : "undefined";
        case TYPE_TEXMAP:
            return value.tex ? quoted(value.tex->GetName()) : "undefined";
        case TYPE_VALUE:
        case TYPE_VOID:
            break;
    }
    return "ok";
}

}  // namespace kiln
