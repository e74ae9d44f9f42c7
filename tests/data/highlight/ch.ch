#!/bin/ch
/* plot.ch: reads samples and plots them.
 * "Quotes" and 'apostrophes' don't count here. */
#include <stdio.h>
#include <array.h>
#include "chplot.h" // the plotting class
#define SAMPLES 128
#define MESSAGE(text) \
    printf("note: %s\n", text); /* a note */ \
    fflush(stdout)
#define DELIM '"'
#undef DEBUG /* switched off
   until the reader works */

import "units.ch"

string_t title = "Samples \"raw\", it's 100%";
array double x[SAMPLES], y[SAMPLES];
complex z = complex(1.0, -2.5e+3);
double limits[2] = {-.5, 1e6};
unsigned int mask = 0x00FFu, mode = 0644, count = 10;
int flags = 0XABUL | 017 | 0;

class Reader {
private:
    FILE *file;
    char *name;
public:
    Reader(char *path);
    ~Reader();
    int next(double *value);
};

Reader::Reader(char *path) {
    name = path; // not owned
    file = fopen(path, "r");
    if (file == NULL)
        throw("can't open \
the file"); /* two lines of text */
}

Reader::~Reader() {
    if (file) fclose(file);
    delete this->name;
}

int Reader::next(double *value) {
    char line[256], c = '\'', d = '"', e = '\\', f = '/';
    if (!fgets(line, sizeof(line), file))
        return 0;
    // lines with "#" or // are comments in the file
    if (line[0] == '#' || (line[0] == '/' && line[1] == '/'))
        return next(value);
    sscanf(line, "%lf", value);
    return 1;
}

int main() {
    class CPlot plot;
    Reader reader("samples.dat");
    string_t token, list = "a;b;c";
    int i = 0;
    foreach (token; list; NULL; ";") {
        printf("token: %s /* no comment */\n", token);
    }
    while (i < SAMPLES && reader.next(&y[i])) {
        x[i] = i * 2.0 * M_PI / SAMPLES;
        y[i] = (y[i] == Inf) ? NaN : y[i];
        i++;
    }
    z += ComplexInf; /* a */ z *= 2; /* b */
    plot.data2D(x, y);
    plot.title(title);
    plot.label(PLOT_AXIS_X, "t [s]);
    plot.plotting();
    switch (i) {
    case 0: printf("nothing read"); break;
    default: goto done;
    }
done:
    return true && !false;
}
/* never closed
int hidden = 1;
