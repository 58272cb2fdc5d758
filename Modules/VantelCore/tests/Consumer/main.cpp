// Uses the installed headers and library through the one include that hosts use.
#include <Vantel/VantelCore.h>

#include <iostream>

int main() {
    const std::optional<Vantel::Path> path = Vantel::Path::Parse("/Main/Blur");
    if (!path || path->GetParent().ToString() != "/Main") {
        return 1;
    }
    std::cout << "consumer linked against VantelCore " << Vantel::BuildInfo::GetDisplayString() << '\n';
    return Vantel::BuildInfo::GetDisplayString() == "alpha 2640" ? 0 : 1;
}
