// How the lengths of polylines are measured on the screen, for stipples that run on: in blocks of texels. A measure is the
// pixels since the block began, which is never negative; or, where a line began in the block, -1 less those since then. All
// are counted from the stipple's last beginning.
// u_lineRun is (two numbers of the program's own, pixels of the whole stipple, number of blocks).

const int kBlockSize = 256;

uniform vec4 u_lineRun;

// Where a block has its number in a texture of 256 in a row.
ivec2 BlockPlace(int block) { return ivec2(block & 255, block >> 8); }

// Pixels since the line began. `carry` are those before the block.
float FromMeasure(float measure, float carry) { return measure < 0.0 ? -1.0 - measure : mod(carry + measure, u_lineRun.z); }
