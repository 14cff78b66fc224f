#include "chain/ChainValidator.h"

#include "values/CompareTimes.h"

namespace norvane {

ChainValidator::ChainValidator() : verify_time(encode_buffer, verify_time_text) {
    set_time_now(verify_time);
}

} // namespace norvane
