// What AArch64 has an instruction for, or two, that compilers do not find in the words of plain.inl.

AVEFFECT_INLINE Register op_adds_epu8(Register a, Register b) {
    return (Register)vqaddq_u8((uint8x16_t)a, (uint8x16_t)b);
}
AVEFFECT_INLINE Register op_subs_epu8(Register a, Register b) {
    return (Register)vqsubq_u8((uint8x16_t)a, (uint8x16_t)b);
}
AVEFFECT_INLINE Register op_subs_epu16(Register a, Register b) {
    return (Register)vqsubq_u16((uint16x8_t)a, (uint16x8_t)b);
}
AVEFFECT_INLINE Register op_adds_epi16(Register a, Register b) {
    return (Register)vqaddq_s16((int16x8_t)a, (int16x8_t)b);
}
AVEFFECT_INLINE Register op_subs_epi16(Register a, Register b) {
    return (Register)vqsubq_s16((int16x8_t)a, (int16x8_t)b);
}
AVEFFECT_INLINE Register op_max_epu8(Register a, Register b) {
    return (Register)vmaxq_u8((uint8x16_t)a, (uint8x16_t)b);
}
AVEFFECT_INLINE Register op_min_epu8(Register a, Register b) {
    return (Register)vminq_u8((uint8x16_t)a, (uint8x16_t)b);
}
AVEFFECT_INLINE Register op_max_epi16(Register a, Register b) {
    return (Register)vmaxq_s16((int16x8_t)a, (int16x8_t)b);
}
AVEFFECT_INLINE Register op_min_epi16(Register a, Register b) {
    return (Register)vminq_s16((int16x8_t)a, (int16x8_t)b);
}

// Products of 32 bits, of which every other half is taken.
AVEFFECT_INLINE Register op_mulhi_epu16(Register a, Register b) {
    const uint16x8_t x = (uint16x8_t)a, y = (uint16x8_t)b;
    return (Register)vuzp2q_u16((uint16x8_t)vmull_u16(vget_low_u16(x), vget_low_u16(y)),
                                (uint16x8_t)vmull_high_u16(x, y));
}
AVEFFECT_INLINE Register op_mulhi_epi16(Register a, Register b) {
    const int16x8_t x = (int16x8_t)a, y = (int16x8_t)b;
    return (Register)vuzp2q_s16((int16x8_t)vmull_s16(vget_low_s16(x), vget_low_s16(y)),
                                (int16x8_t)vmull_high_s16(x, y));
}
AVEFFECT_INLINE Register op_madd_epi16(Register a, Register b) {
    const int16x8_t x = (int16x8_t)a, y = (int16x8_t)b;
    return (Register)vpaddq_s32(vmull_s16(vget_low_s16(x), vget_low_s16(y)), vmull_high_s16(x, y));
}

AVEFFECT_INLINE Register op_packus_epi16(Register low, Register high) {
    return (Register)vqmovun_high_s16(vqmovun_s16((int16x8_t)low), (int16x8_t)high);
}
AVEFFECT_INLINE Register op_packs_epi16(Register low, Register high) {
    return (Register)vqmovn_high_s16(vqmovn_s16((int16x8_t)low), (int16x8_t)high);
}
AVEFFECT_INLINE Register op_packs_epi32(Register low, Register high) {
    return (Register)vqmovn_high_s32(vqmovn_s32((int32x4_t)low), (int32x4_t)high);
}

// The top bit of each byte at its place among eight, and these added up.
AVEFFECT_INLINE int op_movemask_epi8(Register x) {
    const int8_t places[16] = {0, 1, 2, 3, 4, 5, 6, 7, 0, 1, 2, 3, 4, 5, 6, 7};
    const uint8x16_t bits = vshlq_u8((uint8x16_t)(x >> 7), vld1q_s8(places));
    return vaddv_u8(vget_low_u8(bits)) | vaddv_u8(vget_high_u8(bits)) << 8;
}

AVEFFECT_INLINE F32 op_sqrt_ps(F32 x) { return (F32)vsqrtq_f32((float32x4_t)x); }
