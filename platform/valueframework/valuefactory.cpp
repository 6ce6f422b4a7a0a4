#include "valueframework/valuefactory.h"

ValueFactory& ValueFactory::Instance() {
    static ValueFactory factory;
    return factory;
}
