// libvterm, measured as BenchTerm.h says. It leaves the history to its host: here, 500 lines of its cells.

#include "BenchTerm.h"

#include <vector>

#include <vterm.h>

namespace {

class Engine {
public:
    Engine(int cols, int rows) : m_cols(cols), m_rows(rows), m_vterm(vterm_new(rows, cols)) {
        static const VTermScreenCallbacks callbacks = [] {
            VTermScreenCallbacks made{};
            made.sb_pushline = [](int count, const VTermScreenCell* cells, void* engine) {
                return static_cast<Engine*>(engine)->push({cells, cells + count});
            };
            return made;
        }();
        vterm_set_utf8(m_vterm, 1);
        m_screen = vterm_obtain_screen(m_vterm);
        vterm_screen_enable_altscreen(m_screen, 1);
        vterm_screen_set_callbacks(m_screen, &callbacks, this);
        vterm_screen_set_damage_merge(m_screen, VTERM_DAMAGE_SCROLL);
        vterm_screen_reset(m_screen, 1);
    }
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;
    ~Engine() { vterm_free(m_vterm); }

    void feed(const char* data, std::size_t size) {
        vterm_input_write(m_vterm, data, size);
        std::string replies(4096, '\0');
        while (vterm_output_read(m_vterm, replies.data(), replies.size()) > 0) {
        }
    }
    [[nodiscard]] std::string text() const {
        std::string all;
        for (int row = 0; row < m_rows; ++row) {
            std::string line(static_cast<std::size_t>(m_cols) * 32, '\0');
            const VTermRect place{.start_row = row, .end_row = row + 1, .start_col = 0, .end_col = m_cols};
            line.resize(vterm_screen_get_text(m_screen, line.data(), line.size(), place));
            all += bench::lineOf(line);
        }
        return all;
    }

private:
    int push(std::vector<VTermScreenCell> line) {
        if (m_history.size() < bench::historyLines) {
            m_history.push_back(std::move(line));
        } else {
            m_history[m_next] = std::move(line);
            m_next = (m_next + 1) % bench::historyLines;
        }
        return 1;
    }

    int m_cols;
    int m_rows;
    VTerm* m_vterm;
    VTermScreen* m_screen = nullptr;
    std::vector<std::vector<VTermScreenCell>> m_history;
    std::size_t m_next = 0;
};

} // namespace

int main(int argc, char** argv) {
    return bench::measure<Engine>(argc, argv);
}
