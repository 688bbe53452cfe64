// Tables that close themselves, and listeners that write their calls to a log.

#ifndef TESSARIN_TESTS_TABLES_RECORDER_H
#define TESSARIN_TESTS_TABLES_RECORDER_H

#include "tessarin/tables.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace TestSupport {

struct TableCloser {
    void operator()(Tessarin::ITable* table) const { CloseTable(table); }
};
using TableHolder = std::unique_ptr<Tessarin::ITable, TableCloser>;

inline TableHolder NewTable() { return TableHolder(CreateTable()); }

/// Adds "<name><code>:<key or index> " to a log for each call, then calls `act` if there is one.
struct Listener {
    std::string name;
    std::string* log;
    std::function<void(std::uint32_t code, Tessarin::ITable* table, cstr key)> act = {};

    void OnRecord(TableEvent* event) { OnArgument(event->code, event->table, event->key); }

    void OnArgument(std::uint32_t code, Tessarin::ITable* table, cstr key) {
        Note(code, key == nullptr ? "-" : key);
        if (act) act(code, table, key);
    }

    void OnArray(std::uint32_t code, Tessarin::ITable* table, std::uint32_t index) {
        Note(code, std::to_string(index));
        if (act) act(code, table, nullptr);
    }

    Delegate Record() { return RecordDelegate<&Listener::OnRecord>(this); }
    Delegate Argument() { return ArgumentDelegate<&Listener::OnArgument>(this); }
    Delegate Array() { return ArrayDelegate<&Listener::OnArray>(this); }

private:
    void Note(std::uint32_t code, const std::string& about) const {
        *log += name + std::to_string(code) + ":" + about + " ";
    }
};

/// The log, which is then empty for the next step.
inline std::string TakeLog(std::string& log) { return std::exchange(log, {}); }

} // namespace TestSupport

#endif
