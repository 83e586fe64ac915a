#pragma once

// The classic interface: the configuration name on standard input, the
// executable's folder as working directory, every stage's console text, and
// "Finish!" at the end. Returns the exit status of a complete run.
int RunClassic();
