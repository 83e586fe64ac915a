// Deterministic generator of demo and benchmark datasets (filled in later).
int main() { return 0; }
