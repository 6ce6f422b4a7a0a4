#include "components/countingcomponent.h"

namespace {

class GoodComponent : public CountingComponent {
public:
    GoodComponent() { ++s_count; }
    ~GoodComponent() override { --s_count; }
    [[nodiscard]] int GetCount() const override { return s_count; }

private:
    static inline int s_count = 0; // starts again each time that the library is loaded
};

} // namespace

ZAN_DEFINE_COMPONENT(GoodComponent)
