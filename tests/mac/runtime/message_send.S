// SPDX-License-Identifier: MIT
// The message entry points, x86-64 System V. Each keeps every register that can hold an argument, asks the
// runtime for the implementation and jumps to it, so that it leaves no frame behind and C++ exceptions pass.

// Room for six integer registers, rax (the count of vector registers of a variadic call) and eight vector ones,
// a multiple of 16.
#define FRAME 0xd0

.macro SAVE_ARGUMENTS
        push    %rbp
        mov     %rsp, %rbp
        sub     $FRAME, %rsp
        mov     %rdi, -8(%rbp)
        mov     %rsi, -16(%rbp)
        mov     %rdx, -24(%rbp)
        mov     %rcx, -32(%rbp)
        mov     %r8, -40(%rbp)
        mov     %r9, -48(%rbp)
        mov     %rax, -56(%rbp)
        movdqu  %xmm0, -80(%rbp)
        movdqu  %xmm1, -96(%rbp)
        movdqu  %xmm2, -112(%rbp)
        movdqu  %xmm3, -128(%rbp)
        movdqu  %xmm4, -144(%rbp)
        movdqu  %xmm5, -160(%rbp)
        movdqu  %xmm6, -176(%rbp)
        movdqu  %xmm7, -192(%rbp)
.endm

// Leaves the implementation in r11.
.macro RESTORE_ARGUMENTS
        mov     %rax, %r11
        mov     -8(%rbp), %rdi
        mov     -16(%rbp), %rsi
        mov     -24(%rbp), %rdx
        mov     -32(%rbp), %rcx
        mov     -40(%rbp), %r8
        mov     -48(%rbp), %r9
        mov     -56(%rbp), %rax
        movdqu  -80(%rbp), %xmm0
        movdqu  -96(%rbp), %xmm1
        movdqu  -112(%rbp), %xmm2
        movdqu  -128(%rbp), %xmm3
        movdqu  -144(%rbp), %xmm4
        movdqu  -160(%rbp), %xmm5
        movdqu  -176(%rbp), %xmm6
        movdqu  -192(%rbp), %xmm7
        leave
.endm

        .text

// Receiver in rdi, selector in rsi. A message to nil answers zero of every kind.
        .globl  objc_msgSend
        .type   objc_msgSend, @function
objc_msgSend:
        test    %rdi, %rdi
        jz      .Lnil
        SAVE_ARGUMENTS
        call    lexwend_objc_lookUp@PLT
        RESTORE_ARGUMENTS
        jmp     *%r11
.Lnil:
        xor     %eax, %eax
        xor     %edx, %edx
        pxor    %xmm0, %xmm0
        pxor    %xmm1, %xmm1
        ret
        .size   objc_msgSend, .-objc_msgSend

// A structure is returned in memory: its address in rdi, receiver in rsi, selector in rdx. The caller has cleared
// the memory for a receiver that may be nil.
        .globl  objc_msgSend_stret
        .type   objc_msgSend_stret, @function
objc_msgSend_stret:
        test    %rsi, %rsi
        jz      .LnilStructure
        SAVE_ARGUMENTS
        mov     %rsi, %rdi
        mov     %rdx, %rsi
        call    lexwend_objc_lookUp@PLT
        RESTORE_ARGUMENTS
        jmp     *%r11
.LnilStructure:
        mov     %rdi, %rax
        ret
        .size   objc_msgSend_stret, .-objc_msgSend_stret

// In place of the receiver, the address of a receiver and of the class whose superclass is meant.
        .globl  objc_msgSendSuper2
        .type   objc_msgSendSuper2, @function
objc_msgSendSuper2:
        SAVE_ARGUMENTS
        call    lexwend_objc_lookUpSuper@PLT
        RESTORE_ARGUMENTS
        mov     (%rdi), %rdi
        jmp     *%r11
        .size   objc_msgSendSuper2, .-objc_msgSendSuper2

        .globl  objc_msgSendSuper2_stret
        .type   objc_msgSendSuper2_stret, @function
objc_msgSendSuper2_stret:
        SAVE_ARGUMENTS
        mov     %rsi, %rdi
        mov     %rdx, %rsi
        call    lexwend_objc_lookUpSuper@PLT
        RESTORE_ARGUMENTS
        mov     (%rsi), %rsi
        jmp     *%r11
        .size   objc_msgSendSuper2_stret, .-objc_msgSendSuper2_stret

// Without @catch, what the compiler names as the personality of Objective-C++ is the one of C++.
        .globl  __objc_personality_v0
        .type   __objc_personality_v0, @function
__objc_personality_v0:
        jmp     __gxx_personality_v0@PLT
        .size   __objc_personality_v0, .-__objc_personality_v0

        .section .note.GNU-stack, "", @progbits
