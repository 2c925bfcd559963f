#include "TermEngine/TransitionTable.h"

#include <utility>

namespace term {

using enum ParserState;
using Action = ParserAction;

TransitionTable::TransitionTable() {
    table.fill(defaultEntry);
    set(ground, 0x20, 0x7E, Action::print, ground);
    setExecutable(ground, Action::execute);
    buildEscape();
    buildCsi();
    buildStrings();
    buildDcs();
    buildAnywhere();
    set(programStatusEscape, 0x01, 0xA0, Action::escDispatch, ground);
}

void TransitionTable::set(ParserState state, int byte, Action action, ParserState next) {
    table[static_cast<std::size_t>(state) * 256 + static_cast<std::size_t>(byte)] =
        static_cast<std::uint8_t>(static_cast<int>(action) << 4 | static_cast<int>(next));
}

void TransitionTable::set(ParserState state, int first, int last, Action action, ParserState next) {
    for (int byte = first; byte <= last; ++byte) {
        set(state, byte, action, next);
    }
}

/// The C0 controls, but for EM and for those that act anywhere.
void TransitionTable::setExecutable(ParserState state, Action action) {
    set(state, 0x00, 0x18, action, state);
    set(state, 0x1C, 0x1F, action, state);
}

void TransitionTable::buildAnywhere() {
    for (int raw = 0; raw < static_cast<int>(programStatusEscape); ++raw) {
        const auto state = static_cast<ParserState>(raw);
        for (const auto& [first, last] :
             {std::pair(0x18, 0x18), {0x1A, 0x1A}, {0x80, 0x8F}, {0x91, 0x97}, {0x99, 0x9A}}) {
            set(state, first, last, Action::execute, ground);
        }
        set(state, 0x9C, Action::ignore, ground);
        set(state, 0x1B, Action::clear, escape);
        set(state, 0x9D, Action::oscStart, oscString);
        set(state, 0x98, Action::ignore, sosPmApcString);
        set(state, 0x9E, Action::ignore, sosPmApcString);
        set(state, 0x9F, Action::oscStart, apcString);
        set(state, 0x9B, Action::clear, csiEntry);
        set(state, 0x90, Action::clear, dcsEntry);
    }
    set(dcsPassthrough, 0x9C, Action::dcsUnhook, ground);
}

void TransitionTable::buildEscape() {
    setExecutable(escape, Action::execute);
    set(escape, 0x7F, Action::ignore, escape);
    set(escape, 0x20, 0x2F, Action::collect, escapeIntermediate);
    set(escape, 0x30, 0x7E, Action::escDispatch, ground);
    set(escape, 'X', Action::ignore, sosPmApcString);
    set(escape, '^', Action::ignore, sosPmApcString);
    set(escape, '[', Action::clear, csiEntry);
    set(escape, ']', Action::oscStart, oscString);
    set(escape, 'P', Action::clear, dcsEntry);
    set(escape, '_', Action::oscStart, apcString);
    setExecutable(escapeIntermediate, Action::execute);
    set(escapeIntermediate, 0x20, 0x2F, Action::collect, escapeIntermediate);
    set(escapeIntermediate, 0x30, 0x7E, Action::escDispatch, ground);
}

/// ';' and ':' never get here: the scanner of parameters takes them.
void TransitionTable::buildCsi() {
    for (const ParserState state : {csiEntry, csiParam, csiIntermediate, csiIgnore}) {
        setExecutable(state, Action::execute);
    }
    set(csiEntry, 0x30, 0x39, Action::param, csiParam);
    set(csiEntry, 0x3C, 0x3F, Action::collect, csiParam);
    set(csiParam, 0x30, 0x39, Action::param, csiParam);
    set(csiParam, 0x3C, 0x3F, Action::ignore, csiIgnore);
    for (const ParserState state : {csiEntry, csiParam, csiIntermediate}) {
        set(state, 0x20, 0x2F, Action::collect, csiIntermediate);
        set(state, 0x40, 0x7E, Action::csiDispatch, ground);
    }
    set(csiIntermediate, 0x30, 0x3F, Action::ignore, csiIgnore);
    set(csiIgnore, 0x20, 0x3F, Action::ignore, csiIgnore);
    set(csiIgnore, 0x40, 0x7E, Action::ignore, ground);
}

void TransitionTable::buildStrings() {
    for (const ParserState state : {oscString, apcString}) {
        set(state, 0x00, 0x1F, Action::ignore, state);
        set(state, 0x20, 0x7F, Action::oscPut, state);
        set(state, 0xA0, 0xFF, Action::oscPut, state);
    }
    set(sosPmApcString, 0x00, 0xFF, Action::ignore, sosPmApcString);
}

void TransitionTable::buildDcs() {
    for (const ParserState state : {dcsEntry, dcsParam, dcsIntermediate, dcsIgnore}) {
        setExecutable(state, Action::ignore);
    }
    set(dcsEntry, 0x30, 0x39, Action::param, dcsParam);
    set(dcsEntry, 0x3C, 0x3F, Action::collect, dcsParam);
    set(dcsParam, 0x30, 0x39, Action::param, dcsParam);
    set(dcsParam, ':', Action::ignore, dcsIgnore);
    set(dcsParam, 0x3C, 0x3F, Action::ignore, dcsIgnore);
    for (const ParserState state : {dcsEntry, dcsParam, dcsIntermediate}) {
        set(state, 0x20, 0x2F, Action::collect, dcsIntermediate);
        set(state, 0x40, 0x7E, Action::dcsHook, dcsPassthrough);
    }
    set(dcsIntermediate, 0x30, 0x3F, Action::ignore, dcsIgnore);
    set(dcsIgnore, 0x20, 0x7F, Action::ignore, dcsIgnore);
    setExecutable(dcsPassthrough, Action::dcsPut);
    set(dcsPassthrough, 0x19, Action::dcsPut, dcsPassthrough);
    set(dcsPassthrough, 0x20, 0x7F, Action::dcsPut, dcsPassthrough);
    set(dcsPassthrough, 0xA0, 0xFF, Action::dcsPut, dcsPassthrough);
}

TransitionTable TransitionTable::forVt52() {
    TransitionTable made;
    made.set(escape, 0x30, 0x7E, Action::escDispatch, ground);
    // No CSI comes, so that two of its states are free.
    constexpr ParserState row = csiIntermediate;
    constexpr ParserState column = csiIgnore;
    made.set(escape, 'Y', Action::collect, row);
    for (const ParserState state : {escape, escapeIntermediate, row, column}) {
        made.set(state, 0x80, 0xFF, Action::error, ground);
    }
    for (const auto& [first, last] : {std::pair(0x20, 0x7F), {0xA0, 0xFF}}) {
        made.set(row, first, last, Action::collect, column);
        made.set(column, first, last, Action::escDispatch, ground);
    }
    return made;
}

const TransitionTable& sharedVt500Table() {
    static const TransitionTable table;
    return table;
}

const TransitionTable& sharedVt52Table() {
    static const TransitionTable table = TransitionTable::forVt52();
    return table;
}

} // namespace term
