#include "replay.h"

#include <fmt/format.h>

#include <filesystem>
#include <iostream>

#include "call_table.h"
#include "script_error.h"

namespace survhost {
namespace {

/// A line of the script that isn't for the library: blank, or a comment.
bool IsSkipped(const std::string& text) {
    return text.starts_with('#') || text.find_first_not_of(" \t\r") == std::string::npos;
}

RunError Unreadable(const std::string& name) { return RunError(fmt::format("{}: cannot be read", name)); }

}  // namespace

void AnswerWriter::OnCall(const Played& played) {
    std::string text;
    WriteJson(played.answer, text);
    text += '\n';
    out_.write(text.data(), static_cast<std::streamsize>(text.size()));
    if (!out_.flush()) throw std::runtime_error("the answers cannot be written");
}

void Replay::Play(std::istream& script, const std::string& name) {
    std::string text;
    for (std::size_t number = 1; std::getline(script, text); ++number) {
        bytes_ += text.size() + 1;
        try {
            if (!IsSkipped(text)) PlayLine(text);
        } catch (const ScriptError& error) {
            throw RunError(fmt::format("{}:{}: {}", name, number, error.what()));
        }
        for (Observer* observer : observers_) observer->OnProgress(bytes_);
    }
    if (script.bad()) throw Unreadable(name);
}

void Replay::PlayLine(const std::string& text) {
    const Json line = ParseLine(text);
    for (Observer* observer : observers_) observer->BeforeCall(line);
    const Json answer = RunCall(session_, line);
    if (answer.is_null()) return;
    for (Observer* observer : observers_) observer->OnCall({line, answer, session_.Now()});
}

void Replay::PlayFiles(const std::vector<std::string>& files) {
    for (const std::string& name : files) {
        if (name != "-") OpenScript(name);
    }
    for (const std::string& name : files) {
        if (name == "-") {
            Play(std::cin, name);
        } else {
            std::ifstream file = OpenScript(name);
            Play(file, name);
        }
    }
}

std::ifstream OpenScript(const std::string& name) {
    std::error_code none;
    std::ifstream file(name, std::ios::binary);
    if (!file || std::filesystem::is_directory(name, none)) throw Unreadable(name);
    return file;
}

}  // namespace survhost
