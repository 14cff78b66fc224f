#pragma once

/// Numbers of algorithms. The upper three bits of the 16 are the class, the next four the type, the
/// other nine the number within both.
typedef unsigned int ALG_ID;

#define GET_ALG_CLASS(algorithm) ((algorithm)&0xE000U)

#define ALG_CLASS_SIGNATURE 0x2000U
#define ALG_CLASS_HASH 0x8000U
#define ALG_CLASS_KEY_EXCHANGE 0xA000U

/// The type that the platform leaves to other parties.
#define ALG_TYPE_THIRDPARTY 0x1000U

#define CALG_SHA1 0x8004U
#define CALG_SHA_256 0x800CU
#define CALG_SHA_384 0x800DU
#define CALG_SHA_512 0x800EU

#define CALG_RSA_SIGN 0x2400U
#define CALG_RSA_KEYX 0xA400U
#define CALG_DSS_SIGN 0x2200U
#define CALG_ECDSA 0x2203U

/// GOST R 34.11 and 34.10, which have no numbers of the platform's. These are of the third parties'
/// type, and the numbers within it are our own.
#define CALG_NORVANE_GOST_R3411_94 (ALG_CLASS_HASH | ALG_TYPE_THIRDPARTY | 0x101U)
#define CALG_NORVANE_GOST_R3411_2012_256 (ALG_CLASS_HASH | ALG_TYPE_THIRDPARTY | 0x102U)
#define CALG_NORVANE_GOST_R3411_2012_512 (ALG_CLASS_HASH | ALG_TYPE_THIRDPARTY | 0x103U)
#define CALG_NORVANE_GOST_R3410_94 (ALG_CLASS_SIGNATURE | ALG_TYPE_THIRDPARTY | 0x101U)
#define CALG_NORVANE_GOST_R3410_2001 (ALG_CLASS_SIGNATURE | ALG_TYPE_THIRDPARTY | 0x102U)
#define CALG_NORVANE_GOST_R3410_2012_256 (ALG_CLASS_SIGNATURE | ALG_TYPE_THIRDPARTY | 0x103U)
#define CALG_NORVANE_GOST_R3410_2012_512 (ALG_CLASS_SIGNATURE | ALG_TYPE_THIRDPARTY | 0x104U)
