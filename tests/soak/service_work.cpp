// Tab files, the exchange and interned strings.

#include "tests/soak/work.h"
#include "tests/support/memory_files.h"

#include "tessarin/auxiliary.h"

#include <array>
#include <cstring>
#include <thread>

namespace Soak {
namespace {

template <class Object>
struct Releaser {
    void operator()(Object* object) const { object->Release(); }
};

class TabWork : public Work {
public:
    void Step(Random& random) override {
        const std::uint32_t columns = random.Below(9) + 2;
        const std::uint32_t lines = random.Below(60) + 4;
        std::string& text = files_[kPath];
        text.clear();
        for (std::uint32_t line = 0; line < lines; ++line) {
            for (std::uint32_t column = 1; column < columns; ++column) text += Field(random) + '\t';
            text += Field(random) + '\n';
        }
        const std::uint32_t flags = random.Below(8);
        Require(file_->Open(kPath, flags), "a tab file is opened");
        const std::uint32_t skipped = (flags & TABFILE_DEFAULT_ROW) + (flags & TABFILE_SKIP_FIRST_LINE) / 2;
        Require(file_->GetRowCount() == lines - skipped, "every line is a row");
        for (std::uint32_t row = 0; row < lines; ++row) static_cast<void>(file_->GetInteger(row, row % columns, 0));
    }

    void Empty() override {
        std::string().swap(files_[kPath]);
        Require(file_->Open(kPath, 0), "an empty file is opened");
    }

private:
    static std::string Field(Random& random) { return random.Below(3) == 0 ? "" : std::to_string(random.Integer()); }

    static constexpr const char* kPath = "grid.tab";

    TestSupport::MemoryFiles files_;
    std::unique_ptr<ITabFile, Releaser<ITabFile>> file_{CreateTabFile(&files_)};
};

class ExchangeWork : public Work {
public:
    void Step(Random& random) override {
        const std::uint32_t events = random.Below(2000) + 1;
        std::array<std::thread, 2> producers;
        for (std::thread& producer : producers) {
            producer = std::thread(&ExchangeWork::Produce, this, events, random.Below(1000));
        }
        std::uint32_t taken = 0;
        while (taken < 2 * events) {
            Tessarin::EventList* list = exchange_->Exchange();
            for (; list->Front() != nullptr; list->Pop()) ++taken;
            std::this_thread::yield();
        }
        for (std::thread& producer : producers) producer.join();
        for (int side = 0; side < 2; ++side) Require(exchange_->Exchange()->IsEmpty(), "no event comes twice");
    }

    void Empty() override {}

private:
    void Produce(std::uint32_t events, std::uint32_t seed) {
        Random random(seed);
        std::array<std::uint32_t, 64> event{};
        for (std::uint32_t i = 0; i < events; ++i) {
            event[0] = 8 * (random.Below(32) + 1);
            exchange_->Post(event.data());
        }
    }

    std::unique_ptr<Tessarin::IExchangeEvent, Releaser<Tessarin::IExchangeEvent>> exchange_{CreateExchangeEvent()};
};

class StringWork : public Work {
public:
    void Step(Random& random) override {
        for (int i = 0; i < 500; ++i) {
            const std::string text = random.Text();
            const cstr interned = cstr_string(text.c_str());
            Require(interned != nullptr && text == interned, "a text is interned");
            Require(cstr_find(text.c_str()) == interned && cstr_string0(interned) == interned, "and found again");
            Require(cstr_tolower(text.c_str()) == cstr_tolower(interned), "a lower case is one");
            const std::string path = random.Path();
            Require(cstr_path(path.c_str()) == cstr_path0(cstr_path(path.c_str())), "a path's form is its own");
        }
    }

    void Empty() override {}
};

} // namespace

std::unique_ptr<Work> MakeTabWork() { return std::make_unique<TabWork>(); }
std::unique_ptr<Work> MakeExchangeWork() { return std::make_unique<ExchangeWork>(); }
std::unique_ptr<Work> MakeStringWork() { return std::make_unique<StringWork>(); }

} // namespace Soak
