#include "Rows.h"

namespace Bench {

void AddPlainRows(Cases& cases) {
    AddTransferRows(cases);
    AddCreationRows(cases);
    AddConnectionRows(cases);
    AddDatagramRows(cases);
    AddNameRows(cases);
    AddSelectionRows(cases);
    AddFailureRows(cases);
    AddRecordRows(cases);
}

}  // namespace Bench
