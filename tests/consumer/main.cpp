// A host outside the tree: one include, one environment, one interval operation.
#include <Nox.h>

#include <cstdio>

int main() {
    NoxEnvironment env;
    NoxRealInterval r = NoxIntersect(NoxCreateRealInterval(0, 2), NoxCreateRealInterval(1, 3),
                                     env.GetTolerance());
    if (r.lower != 1 || r.upper != 2 || NoxMaxInteger != 2147483646)
        return 1;
    std::printf("consumer linked against Nox: [%g, %g]\n", r.lower, r.upper);
    return 0;
}
