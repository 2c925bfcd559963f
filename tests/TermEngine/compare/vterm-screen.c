/* Screens of libvterm: reads "COLS ROWS SIZE\n" and SIZE bytes, as often as they come, and prints the cursor and the
   cells of each, a line for a cell: scalars, width, foreground, background, flags. Built by `compare`. */
#include <stdio.h>
#include <stdlib.h>
#include <vterm.h>

static void color(const VTermColor *c, int isForeground) {
    if (isForeground ? VTERM_COLOR_IS_DEFAULT_FG(c) : VTERM_COLOR_IS_DEFAULT_BG(c))
        printf("\t-");
    else if (VTERM_COLOR_IS_INDEXED(c))
        printf("\t%d", c->indexed.idx);
    else
        printf("\t%d,%d,%d", c->rgb.red, c->rgb.green, c->rgb.blue);
}

int main(void) {
    int cols, rows, size;
    while (scanf("%d %d %d%*c", &cols, &rows, &size) == 3) {
        char *bytes = malloc(size + 1);
        VTerm *vt = vterm_new(rows, cols);
        VTermScreen *screen = vterm_obtain_screen(vt);
        VTermPos pos;
        if (fread(bytes, 1, size, stdin) != (size_t)size)
            return 1;
        vterm_set_utf8(vt, 1);
        vterm_screen_enable_altscreen(screen, 1);
        vterm_screen_reset(screen, 1);
        vterm_input_write(vt, bytes, size);
        vterm_state_get_cursorpos(vterm_obtain_state(vt), &pos);
        printf("%d %d\n", pos.row, pos.col);
        for (pos.row = 0; pos.row < rows; ++pos.row)
            for (pos.col = 0; pos.col < cols; ++pos.col) {
                VTermScreenCell cell;
                vterm_screen_get_cell(screen, pos, &cell);
                for (int i = 0; i < VTERM_MAX_CHARS_PER_CELL && cell.chars[i]; ++i)
                    printf("%s%u", i ? "," : "", cell.chars[i]);
                printf("\t%d", cell.width);
                color(&cell.fg, 1);
                color(&cell.bg, 0);
                printf(
                    "\t%s%s%s%s%s%s\n", cell.attrs.bold ? "b" : "", cell.attrs.italic ? "i" : "",
                    cell.attrs.underline ? "u" : "", cell.attrs.blink ? "k" : "", cell.attrs.reverse ? "r" : "",
                    cell.attrs.strike ? "s" : "");
            }
        fflush(stdout);
        vterm_free(vt);
        free(bytes);
    }
    return 0;
}
