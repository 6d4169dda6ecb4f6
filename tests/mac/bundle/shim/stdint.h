/* SPDX-License-Identifier: MIT */
/* On Darwin the 64-bit types are long long, on the C library whose headers are borrowed here they are long.
   Mangled names depend on it. Each guard keeps the borrowed header from defining the type. */
#pragma once

#define __DEFINED_int8_t
#define __DEFINED_int16_t
#define __DEFINED_int32_t
#define __DEFINED_int64_t
#define __DEFINED_uint8_t
#define __DEFINED_uint16_t
#define __DEFINED_uint32_t
#define __DEFINED_uint64_t
#define __DEFINED_u_int64_t
#define __DEFINED_intmax_t
#define __DEFINED_uintmax_t

typedef signed char int8_t;
typedef short int16_t;
typedef int int32_t;
typedef long long int64_t;
typedef unsigned char uint8_t;
typedef unsigned short uint16_t;
typedef unsigned int uint32_t;
typedef unsigned long long uint64_t;
typedef unsigned long long u_int64_t;
typedef long intmax_t;
typedef unsigned long uintmax_t;

#include_next <stdint.h>
