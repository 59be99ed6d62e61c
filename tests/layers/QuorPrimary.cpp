#include <QuorPrimary/QuorPrimaryFactories.h>
#include <memory>

int main()
{
    const std::unique_ptr<QuorPrimary> line(createQuorLine(KxGePoint3D(), KxGePoint3D(1, 0, 0)));
    return line && line->toPrimary2D() ? 0 : 1;
}
