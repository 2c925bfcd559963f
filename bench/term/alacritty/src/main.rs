//! The engine of Alacritty, measured as bench/term/BenchTerm.h says.

use alacritty_terminal::ansi::Processor;
use alacritty_terminal::config::Config;
use alacritty_terminal::event::VoidListener;
use alacritty_terminal::grid::Dimensions;
use alacritty_terminal::index::{Column, Line};
use alacritty_terminal::term::cell::Flags;
use alacritty_terminal::term::Term;

const PIECE: usize = 64 * 1024;
const ROUNDS: usize = 3;
const ENOUGH_SECONDS: f64 = 2.0;
const WARM_UP: usize = 2_000_000;
const HISTORY: u32 = 500;

struct Size {
    columns: usize,
    rows: usize,
}

impl Dimensions for Size {
    fn total_lines(&self) -> usize {
        self.rows
    }
    fn screen_lines(&self) -> usize {
        self.rows
    }
    fn columns(&self) -> usize {
        self.columns
    }
}

/// The time that the processor gave to this thread.
fn now() -> f64 {
    let mut time = libc::timespec { tv_sec: 0, tv_nsec: 0 };
    unsafe { libc::clock_gettime(libc::CLOCK_THREAD_CPUTIME_ID, &mut time) };
    time.tv_sec as f64 + time.tv_nsec as f64 / 1e9
}

fn terminal(size: &Size) -> Term<VoidListener> {
    let mut config = Config::default();
    config.scrolling.set_history(HISTORY);
    Term::new(&config, size, VoidListener)
}

fn feed(terminal: &mut Term<VoidListener>, data: &[u8]) {
    let mut parser = Processor::new();
    for piece in data.chunks(PIECE) {
        for byte in piece {
            parser.advance(terminal, *byte);
        }
    }
}

fn main() {
    let mut arguments: Vec<String> = std::env::args().skip(1).collect();
    let shows = arguments[0] == "--text";
    if shows {
        arguments.remove(0);
    }
    let size = Size { columns: arguments[0].parse().unwrap(), rows: arguments[1].parse().unwrap() };
    let data = std::fs::read(&arguments[2]).unwrap();
    if shows {
        let mut last = terminal(&size);
        feed(&mut last, &data);
        for row in 0..size.rows {
            let line = &last.grid()[Line(row as i32)];
            let mut text = String::new();
            for column in 0..size.columns {
                let cell = &line[Column(column)];
                if !cell.flags.contains(Flags::WIDE_CHAR_SPACER) {
                    text.push(cell.c);
                    text.extend(cell.zerowidth().unwrap_or(&[]));
                }
            }
            println!("{}", text.trim_end());
        }
        return;
    }
    feed(&mut terminal(&size), &data[..data.len().min(WARM_UP)]);
    let mut total = 0.0;
    for _ in 0..ROUNDS {
        let mut fresh = terminal(&size);
        let start = now();
        feed(&mut fresh, &data);
        let seconds = now() - start;
        println!("{:.1}", data.len() as f64 / 1e6 / seconds);
        total += seconds;
        if total > ENOUGH_SECONDS {
            break;
        }
    }
}
