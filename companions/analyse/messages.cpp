// JSON by the library; a message that lacks a field is none.
#include "messages.h"

#include <nlohmann/json.hpp>

using nlohmann::json;

std::string messageOf(const Position& position) {
    return json{{"fen", position.fen}, {"moves", position.moves}}.dump();
}

std::string messageOf(const Analysis& analysis) {
    json choices = json::array();
    for (const Choice& choice : analysis.choices) {
        choices.push_back({choice.depth, choice.milliseconds, choice.move});
    }
    return json{{"fault", analysis.fault}, {"standstill", static_cast<i32>(analysis.standstill)},
                {"depth", analysis.depth}, {"score", analysis.score},
                {"nodes", analysis.nodes}, {"milliseconds", analysis.milliseconds},
                {"line", analysis.line},   {"choices", choices}}
        .dump();
}

bool readMessage(std::string_view line, Position& position) {
    const json message = json::parse(line, nullptr, false);
    try {
        position = {message.at("fen"), message.at("moves")};
        return true;
    } catch (const json::exception&) {
        return false;
    }
}

bool readMessage(std::string_view line, Analysis& analysis) {
    const json message = json::parse(line, nullptr, false);
    try {
        analysis = {message.at("fault"), static_cast<Standstill>(message.at("standstill").get<u8>()),
                    message.at("depth"), message.at("score"),
                    message.at("nodes"), message.at("milliseconds"),
                    message.at("line"),  {}};
        for (const json& choice : message.at("choices")) {
            analysis.choices.push_back({choice.at(0), choice.at(1), choice.at(2)});
        }
        return true;
    } catch (const json::exception&) {
        return false;
    }
}
