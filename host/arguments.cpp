#include "arguments.h"

#include <fmt/format.h>

#include <cassert>

namespace survhost {

bool HasWord(std::string_view words, std::string_view word) {
    while (!words.empty()) {
        const auto end = std::min(words.find(' '), words.size());
        if (words.substr(0, end) == word) return true;
        words.remove_prefix(std::min(end + 1, words.size()));
    }
    return false;
}

Arguments::Arguments(const Json& line, std::string_view known) : line_(line), known_(known) {
    for (const auto& [name, value] : line.items()) {
        if (name != "call" && !HasWord(known, name)) {
            throw ScriptError(fmt::format("{} has no argument \"{}\"; it takes: {}", line["call"].get<std::string>(),
                                          name, known.empty() ? "none" : known));
        }
    }
}

const Json* Arguments::Find(std::string_view name) const {
    assert(HasWord(known_, name) && "the call table doesn't name this argument");
    const auto found = line_.find(std::string(name));
    return found == line_.end() ? nullptr : &*found;
}

const Json& Arguments::Need(std::string_view name) const {
    const Json* value = Find(name);
    if (!value) throw ScriptError(fmt::format("\"{}\" is missing", name));
    return *value;
}

std::string Arguments::Text(std::string_view name) const {
    const Json* value = Find(name);
    return value ? TextOf(*value, name, std::string::npos) : std::string();
}

std::vector<char> Arguments::Buffer(std::string_view name) const {
    const std::string text = Text(name);
    return {text.c_str(), text.c_str() + text.size() + 1};
}

std::vector<std::string> Arguments::Texts(std::string_view name) const {
    std::vector<std::string> texts;
    const Json* array = FindArray(name);
    for (std::size_t i = 0; array && i < array->size(); ++i) {
        texts.push_back(TextOf((*array)[i], ElementName(name, i), std::string::npos));
    }
    return texts;
}

const Json* Arguments::FindArray(std::string_view name) const {
    const Json* value = Find(name);
    if (value && !value->is_array()) throw ScriptError(fmt::format("\"{}\" must be an array", name));
    return value;
}

std::string Arguments::ElementName(std::string_view name, std::size_t index) {
    return fmt::format("{}[{}]", name, index);
}

void Arguments::Encode(const RecordTable& table, const Json& object, std::string_view name, char* record) {
    try {
        EncodeRecord(table, object, record);
    } catch (const ScriptError& error) {
        throw ScriptError(fmt::format("{}: {}", name, error.what()));
    }
}

}  // namespace survhost
