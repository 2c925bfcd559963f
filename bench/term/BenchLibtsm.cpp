// libtsm, measured as BenchTerm.h says.

#include "BenchTerm.h"
#include "TermEngine/Unicode.h"

#include <vector>

#include <libtsm.h>

namespace {

class Engine {
public:
    Engine(int cols, int rows) : m_cols(static_cast<std::size_t>(cols)), m_rows(static_cast<std::size_t>(rows)) {
        tsm_screen_new(&m_screen, nullptr, nullptr);
        tsm_screen_resize(m_screen, static_cast<unsigned>(cols), static_cast<unsigned>(rows));
        tsm_screen_set_max_sb(m_screen, bench::historyLines);
        tsm_vte_new(&m_vte, m_screen, [](tsm_vte*, const char*, std::size_t, void*) {}, nullptr, nullptr, nullptr);
    }
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;
    ~Engine() {
        tsm_vte_unref(m_vte);
        tsm_screen_unref(m_screen);
    }

    void feed(const char* data, std::size_t size) { tsm_vte_input(m_vte, data, size); }
    [[nodiscard]] std::string text() const {
        std::vector<std::vector<std::string>> cells(m_rows, std::vector<std::string>(m_cols, " "));
        tsm_screen_draw(
            m_screen,
            [](tsm_screen*, auto, const std::uint32_t* scalars, std::size_t count, unsigned width, unsigned col,
               unsigned row, const tsm_screen_attr*, tsm_age_t, void* drawn) {
                std::string text;
                for (std::size_t i = 0; i < count; ++i) {
                    term::unicode::appendUtf8(text, scalars[i]);
                }
                auto& cell = (*static_cast<decltype(cells)*>(drawn))[row][col];
                cell = count > 0 ? text : width == 0 ? "" : " ";
                return 0;
            },
            &cells);
        std::string all;
        for (const auto& row : cells) {
            std::string line;
            for (const std::string& cell : row) {
                line += cell;
            }
            all += bench::lineOf(line);
        }
        return all;
    }

private:
    std::size_t m_cols;
    std::size_t m_rows;
    tsm_screen* m_screen = nullptr;
    tsm_vte* m_vte = nullptr;
};

} // namespace

int main(int argc, char** argv) {
    return bench::measure<Engine>(argc, argv);
}
