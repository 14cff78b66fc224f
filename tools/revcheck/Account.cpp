#include "Report.h"

namespace norvane {

Account account_of(const Verdict& verdict, const DecisionRecord* record) {
    Account account{.record = record};
    if (record != nullptr && verdict.status == Status::no_check) {
        account.reasons = find_reasons(*record, last_question_of(*record));
    }
    return account;
}

} // namespace norvane
