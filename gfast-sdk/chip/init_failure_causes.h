// Why an initialisation failed.
#pragma once

#include <std/c_words.h>

// Initialisation success/failure cause (ITU-T G.997.2). A chip may say others.
typedef uint32_t G9972_initSuccessFailureCause_t;
GFAST_API_WORDS{
    E_INITSFCAUSE_SUCCESSS = 0,
    E_INITSFCAUSE_CONFIG_ERROR = 1,
    E_INITSFCAUSE_CONFIG_NOT_FEASIBLE = 2,
    E_INITSFCAUSE_COMM_PROBLEM = 3,
    E_INITSFCAUSE_NO_FAR_END_FTU_DETECTED = 4,
    E_INITSFCAUSE_OTHER = 5,
};
