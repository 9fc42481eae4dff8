#include "lookup/services.h"

const CallbookService* ServiceByNumber(int number) {
    return number >= 1 && number <= static_cast<int>(kServices.size()) ? &kServices[number - 1] : nullptr;
}
