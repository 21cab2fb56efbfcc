// tangent_d_data.h: tables and polynomials of the double tangent, made by tools/tables/tangent_d.py.
// SPDX-License-Identifier: MIT
// clang-format off
#ifndef ORIN_VECTOR_MATH_DATA_TANGENT_D_DATA_H
#define ORIN_VECTOR_MATH_DATA_TANGENT_D_DATA_H

namespace orin::vector_math::tangent_d_data {

// tan a = S/C for a = pi j/64, the larger of the two 1; each as its first 27 bits and the rest. 0 is -0: -0 + x = x.
alignas(64) inline constexpr double ha_table[256] = {
    -0.0, 0x0.0p+0, 0x1p+0, 0x0.0p+0,
    0x1.927278c000000p-5, -0x1.c4ee9dfca4bd8p-33, 0x1p+0, 0x0.0p+0,
    0x1.936bb8c000000p-4, 0x1.6cb68987d054fp-34, 0x1p+0, 0x0.0p+0,
    0x1.2fcac74000000p-3, -0x1.67e6ff698252cp-33, 0x1p+0, 0x0.0p+0,
    0x1.975f5e0000000p-3, 0x1.54c5601ef5d36p-33, 0x1p+0, 0x0.0p+0,
    0x1.007fa74000000p-2, 0x1.8626ae2b4dad8p-30, 0x1p+0, 0x0.0p+0,
    0x1.36a0834000000p-2, 0x1.5c63dbc51f65dp-30, 0x1p+0, 0x0.0p+0,
    0x1.6e649f8000000p-2, -0x1.43cdb68716ba2p-33, 0x1p+0, 0x0.0p+0,
    0x1.a827998000000p-2, 0x1.fcef32422cbecp-30, 0x1p+0, 0x0.0p+0,
    0x1.e450e0c000000p-2, 0x1.273e7a50548bcp-30, 0x1p+0, 0x0.0p+0,
    0x1.11ab718000000p-1, 0x1.0834eb86a6d0dp-29, 0x1p+0, 0x0.0p+0,
    0x1.32e1888000000p-1, 0x1.047ffcbbd2ef8p-29, 0x1p+0, 0x0.0p+0,
    0x1.561b82c000000p-1, -0x1.48066fa15ceb8p-29, 0x1p+0, 0x0.0p+0,
    0x1.7bb99ec000000p-1, 0x1.2990ce9562b1cp-29, 0x1p+0, 0x0.0p+0,
    0x1.a43002c000000p-1, -0x1.1bd7b034db702p-29, 0x1p+0, 0x0.0p+0,
    0x1.d00cbc8000000p-1, -0x1.8f65a39c8d49fp-30, 0x1p+0, 0x0.0p+0,
    0x1p+0, 0x0.0p+0, 0x1p+0, 0x0.0p+0,
    0x1p+0, 0x0.0p+0, 0x1.d00cbc8000000p-1, -0x1.8f65a39c8d49fp-30,
    0x1p+0, 0x0.0p+0, 0x1.a43002c000000p-1, -0x1.1bd7b034db702p-29,
    0x1p+0, 0x0.0p+0, 0x1.7bb99ec000000p-1, 0x1.2990ce9562b1cp-29,
    0x1p+0, 0x0.0p+0, 0x1.561b82c000000p-1, -0x1.48066fa15ceb8p-29,
    0x1p+0, 0x0.0p+0, 0x1.32e1888000000p-1, 0x1.047ffcbbd2ef8p-29,
    0x1p+0, 0x0.0p+0, 0x1.11ab718000000p-1, 0x1.0834eb86a6d0dp-29,
    0x1p+0, 0x0.0p+0, 0x1.e450e0c000000p-2, 0x1.273e7a50548bcp-30,
    0x1p+0, 0x0.0p+0, 0x1.a827998000000p-2, 0x1.fcef32422cbecp-30,
    0x1p+0, 0x0.0p+0, 0x1.6e649f8000000p-2, -0x1.43cdb68716ba2p-33,
    0x1p+0, 0x0.0p+0, 0x1.36a0834000000p-2, 0x1.5c63dbc51f65dp-30,
    0x1p+0, 0x0.0p+0, 0x1.007fa74000000p-2, 0x1.8626ae2b4dad8p-30,
    0x1p+0, 0x0.0p+0, 0x1.975f5e0000000p-3, 0x1.54c5601ef5d36p-33,
    0x1p+0, 0x0.0p+0, 0x1.2fcac74000000p-3, -0x1.67e6ff698252cp-33,
    0x1p+0, 0x0.0p+0, 0x1.936bb8c000000p-4, 0x1.6cb68987d054fp-34,
    0x1p+0, 0x0.0p+0, 0x1.927278c000000p-5, -0x1.c4ee9dfca4bd8p-33,
    0x1p+0, 0x0.0p+0, -0.0, 0x0.0p+0,
    0x1p+0, 0x0.0p+0, -0x1.927278c000000p-5, 0x1.c4ee9dfca4bd8p-33,
    0x1p+0, 0x0.0p+0, -0x1.936bb8c000000p-4, -0x1.6cb68987d054fp-34,
    0x1p+0, 0x0.0p+0, -0x1.2fcac74000000p-3, 0x1.67e6ff698252cp-33,
    0x1p+0, 0x0.0p+0, -0x1.975f5e0000000p-3, -0x1.54c5601ef5d36p-33,
    0x1p+0, 0x0.0p+0, -0x1.007fa74000000p-2, -0x1.8626ae2b4dad8p-30,
    0x1p+0, 0x0.0p+0, -0x1.36a0834000000p-2, -0x1.5c63dbc51f65dp-30,
    0x1p+0, 0x0.0p+0, -0x1.6e649f8000000p-2, 0x1.43cdb68716ba2p-33,
    0x1p+0, 0x0.0p+0, -0x1.a827998000000p-2, -0x1.fcef32422cbecp-30,
    0x1p+0, 0x0.0p+0, -0x1.e450e0c000000p-2, -0x1.273e7a50548bcp-30,
    0x1p+0, 0x0.0p+0, -0x1.11ab718000000p-1, -0x1.0834eb86a6d0dp-29,
    0x1p+0, 0x0.0p+0, -0x1.32e1888000000p-1, -0x1.047ffcbbd2ef8p-29,
    0x1p+0, 0x0.0p+0, -0x1.561b82c000000p-1, 0x1.48066fa15ceb8p-29,
    0x1p+0, 0x0.0p+0, -0x1.7bb99ec000000p-1, -0x1.2990ce9562b1cp-29,
    0x1p+0, 0x0.0p+0, -0x1.a43002c000000p-1, 0x1.1bd7b034db702p-29,
    0x1p+0, 0x0.0p+0, -0x1.d00cbc8000000p-1, 0x1.8f65a39c8d49fp-30,
    -0x1p+0, 0x1p-239, 0x1p+0, 0x0.0p+0,
    -0x1.d00cbc8000000p-1, 0x1.8f65a39c8d49fp-30, 0x1p+0, 0x0.0p+0,
    -0x1.a43002c000000p-1, 0x1.1bd7b034db702p-29, 0x1p+0, 0x0.0p+0,
    -0x1.7bb99ec000000p-1, -0x1.2990ce9562b1cp-29, 0x1p+0, 0x0.0p+0,
    -0x1.561b82c000000p-1, 0x1.48066fa15ceb8p-29, 0x1p+0, 0x0.0p+0,
    -0x1.32e1888000000p-1, -0x1.047ffcbbd2ef8p-29, 0x1p+0, 0x0.0p+0,
    -0x1.11ab718000000p-1, -0x1.0834eb86a6d0dp-29, 0x1p+0, 0x0.0p+0,
    -0x1.e450e0c000000p-2, -0x1.273e7a50548bcp-30, 0x1p+0, 0x0.0p+0,
    -0x1.a827998000000p-2, -0x1.fcef32422cbecp-30, 0x1p+0, 0x0.0p+0,
    -0x1.6e649f8000000p-2, 0x1.43cdb68716ba2p-33, 0x1p+0, 0x0.0p+0,
    -0x1.36a0834000000p-2, -0x1.5c63dbc51f65dp-30, 0x1p+0, 0x0.0p+0,
    -0x1.007fa74000000p-2, -0x1.8626ae2b4dad8p-30, 0x1p+0, 0x0.0p+0,
    -0x1.975f5e0000000p-3, -0x1.54c5601ef5d36p-33, 0x1p+0, 0x0.0p+0,
    -0x1.2fcac74000000p-3, 0x1.67e6ff698252cp-33, 0x1p+0, 0x0.0p+0,
    -0x1.936bb8c000000p-4, -0x1.6cb68987d054fp-34, 0x1p+0, 0x0.0p+0,
    -0x1.927278c000000p-5, 0x1.c4ee9dfca4bd8p-33, 0x1p+0, 0x0.0p+0,
};

// T = tan a for a = pi j/256, nearest. 0 is -0. At the pole T = 2^200: (T + t)/(1 - T t) = -1/t there for all t from
// 2^-62 on, where no double's is smaller.
alignas(64) inline constexpr double tangents[256] = {
    -0.0, 0x1.9224e047e368ep-7, 0x1.92346247a91f0p-6, 0x1.2dbaae9a05db0p-5,
    0x1.927278a3b1162p-5, 0x1.f7495ea3f3783p-5, 0x1.2e239ccff3831p-4, 0x1.60b9f7597fdecp-4,
    0x1.936bb8c5b2da2p-4, 0x1.c63ce377fc802p-4, 0x1.f93183a8db9e9p-4, 0x1.1626d85a91e70p-3,
    0x1.2fcac73a60640p-3, 0x1.4986a74cf4e57p-3, 0x1.635c990ce0d36p-3, 0x1.7d4ec54fb5968p-3,
    0x1.975f5e0553158p-3, 0x1.b1909efd8b762p-3, 0x1.cbe4ceb4b4cf2p-3, 0x1.e65e3f27c9f2ap-3,
    0x1.007fa758626aep-2, 0x1.0de53475f3b3cp-2, 0x1.1b6103d3597e9p-2, 0x1.28f459ecad74dp-2,
    0x1.36a08355c63dcp-2, 0x1.4466d542bac92p-2, 0x1.5248ae1701b17p-2, 0x1.604775fbb27dfp-2,
    0x1.6e649f7d78649p-2, 0x1.7ca1a832d0f84p-2, 0x1.8b00196b3d022p-2, 0x1.998188e816bf0p-2,
    0x1.a827999fcef32p-2, 0x1.b6f3fc8c61e5bp-2, 0x1.c5e87185e67b6p-2, 0x1.d506c82a2c800p-2,
    0x1.e450e0d273e7ap-2, 0x1.f3c8ad985d9eep-2, 0x1.01b819b5a7cf7p-1, 0x1.09a4c59bd0d4dp-1,
    0x1.11ab7190834ecp-1, 0x1.19cd3fe8e405dp-1, 0x1.220b5ef047825p-1, 0x1.2a6709a74f289p-1,
    0x1.32e1889047ffdp-1, 0x1.3b7c3289ed6f3p-1, 0x1.44386db9ce5dbp-1, 0x1.4d17b087b265dp-1,
    0x1.561b82ab7f990p-1, 0x1.5f457e4f4812ep-1, 0x1.6897514751db6p-1, 0x1.7212be621be6dp-1,
    0x1.7bb99ed2990cfp-1, 0x1.858de3b716571p-1, 0x1.8f9197bf85eebp-1, 0x1.99c6e0f634394p-1,
    0x1.a43002ae42850p-1, 0x1.aecf5f9ba35a6p-1, 0x1.b9a77c18c1af2p-1, 0x1.c4bb009e77983p-1,
    0x1.d00cbc7384d2ep-1, 0x1.db9fa89953fcfp-1, 0x1.e776eafc91706p-1, 0x1.f395d9f0e3c92p-1,
    0x1p+0, 0x1.065c900aaf2d8p+0, 0x1.0ce29d0883c99p+0, 0x1.139447e6a86eep+0,
    0x1.1a73d55278c4bp+0, 0x1.2183b0c4573ffp+0, 0x1.28c66fdaf8f09p+0, 0x1.303ed61109e20p+0,
    0x1.37efd8d87607ep+0, 0x1.3fdca42847507p+0, 0x1.48089f8bf42ccp+0, 0x1.507773c537eadp+0,
    0x1.592d11142fa55p+0, 0x1.622db63c8ecc2p+0, 0x1.6b7df86265200p+0, 0x1.7522cbdd428a8p+0,
    0x1.7f218e25a7461p+0, 0x1.89801106cc709p+0, 0x1.9444a7462122ap+0, 0x1.9f7632fa9e871p+0,
    0x1.ab1c35d8a74eap+0, 0x1.b73ee3c3ef16ap+0, 0x1.c3e738086bc0fp+0, 0x1.d11f0dae40609p+0,
    0x1.def13b73c1406p+0, 0x1.ed69b4153a45dp+0, 0x1.fc95abad6cf4ap+0, 0x1.0641e192ceab3p+1,
    0x1.0ea21d716fbf7p+1, 0x1.17749711a6679p+1, 0x1.20c36c6a7f38ep+1, 0x1.2a99f50fd4f4fp+1,
    0x1.3504f333f9de6p+1, 0x1.4012ce2586a17p+1, 0x1.4bd3d87fe0650p+1, 0x1.585aa4e1530fap+1,
    0x1.65bc6cc825147p+1, 0x1.74118e4b6a7c8p+1, 0x1.837626d70fdb8p+1, 0x1.940ad30abc792p+1,
    0x1.a5f59e90600ddp+1, 0x1.b9633283b6d14p+1, 0x1.ce885653127e7p+1, 0x1.e5a3de972a377p+1,
    0x1.ff01305ecd8dcp+1, 0x1.0d7dc7cff4c9ep+2, 0x1.1d0143e71565fp+2, 0x1.2e4ff1626b949p+2,
    0x1.41bfee2424771p+2, 0x1.57be4eaa5e11bp+2, 0x1.70d751908c1b1p+2, 0x1.8dc25c117782bp+2,
    0x1.af73f4ca3310fp+2, 0x1.d7398d15e70dbp+2, 0x1.0372fb36b87e2p+3, 0x1.208dbdae055efp+3,
    0x1.44e6c595afdccp+3, 0x1.7398c57f3f1adp+3, 0x1.b1d03c03d2f7fp+3, 0x1.046e9fe60a77ep+4,
    0x1.45affed201b55p+4, 0x1.b267195b1ffaep+4, 0x1.45e2455e4aaa7p+5, 0x1.45eed6854ce99p+6,
    0x1p+200, -0x1.45eed6854ce99p+6, -0x1.45e2455e4aaa7p+5, -0x1.b267195b1ffaep+4,
    -0x1.45affed201b55p+4, -0x1.046e9fe60a77ep+4, -0x1.b1d03c03d2f7fp+3, -0x1.7398c57f3f1adp+3,
    -0x1.44e6c595afdccp+3, -0x1.208dbdae055efp+3, -0x1.0372fb36b87e2p+3, -0x1.d7398d15e70dbp+2,
    -0x1.af73f4ca3310fp+2, -0x1.8dc25c117782bp+2, -0x1.70d751908c1b1p+2, -0x1.57be4eaa5e11bp+2,
    -0x1.41bfee2424771p+2, -0x1.2e4ff1626b949p+2, -0x1.1d0143e71565fp+2, -0x1.0d7dc7cff4c9ep+2,
    -0x1.ff01305ecd8dcp+1, -0x1.e5a3de972a377p+1, -0x1.ce885653127e7p+1, -0x1.b9633283b6d14p+1,
    -0x1.a5f59e90600ddp+1, -0x1.940ad30abc792p+1, -0x1.837626d70fdb8p+1, -0x1.74118e4b6a7c8p+1,
    -0x1.65bc6cc825147p+1, -0x1.585aa4e1530fap+1, -0x1.4bd3d87fe0650p+1, -0x1.4012ce2586a17p+1,
    -0x1.3504f333f9de6p+1, -0x1.2a99f50fd4f4fp+1, -0x1.20c36c6a7f38ep+1, -0x1.17749711a6679p+1,
    -0x1.0ea21d716fbf7p+1, -0x1.0641e192ceab3p+1, -0x1.fc95abad6cf4ap+0, -0x1.ed69b4153a45dp+0,
    -0x1.def13b73c1406p+0, -0x1.d11f0dae40609p+0, -0x1.c3e738086bc0fp+0, -0x1.b73ee3c3ef16ap+0,
    -0x1.ab1c35d8a74eap+0, -0x1.9f7632fa9e871p+0, -0x1.9444a7462122ap+0, -0x1.89801106cc709p+0,
    -0x1.7f218e25a7461p+0, -0x1.7522cbdd428a8p+0, -0x1.6b7df86265200p+0, -0x1.622db63c8ecc2p+0,
    -0x1.592d11142fa55p+0, -0x1.507773c537eadp+0, -0x1.48089f8bf42ccp+0, -0x1.3fdca42847507p+0,
    -0x1.37efd8d87607ep+0, -0x1.303ed61109e20p+0, -0x1.28c66fdaf8f09p+0, -0x1.2183b0c4573ffp+0,
    -0x1.1a73d55278c4bp+0, -0x1.139447e6a86eep+0, -0x1.0ce29d0883c99p+0, -0x1.065c900aaf2d8p+0,
    -0x1p+0, -0x1.f395d9f0e3c92p-1, -0x1.e776eafc91706p-1, -0x1.db9fa89953fcfp-1,
    -0x1.d00cbc7384d2ep-1, -0x1.c4bb009e77983p-1, -0x1.b9a77c18c1af2p-1, -0x1.aecf5f9ba35a6p-1,
    -0x1.a43002ae42850p-1, -0x1.99c6e0f634394p-1, -0x1.8f9197bf85eebp-1, -0x1.858de3b716571p-1,
    -0x1.7bb99ed2990cfp-1, -0x1.7212be621be6dp-1, -0x1.6897514751db6p-1, -0x1.5f457e4f4812ep-1,
    -0x1.561b82ab7f990p-1, -0x1.4d17b087b265dp-1, -0x1.44386db9ce5dbp-1, -0x1.3b7c3289ed6f3p-1,
    -0x1.32e1889047ffdp-1, -0x1.2a6709a74f289p-1, -0x1.220b5ef047825p-1, -0x1.19cd3fe8e405dp-1,
    -0x1.11ab7190834ecp-1, -0x1.09a4c59bd0d4dp-1, -0x1.01b819b5a7cf7p-1, -0x1.f3c8ad985d9eep-2,
    -0x1.e450e0d273e7ap-2, -0x1.d506c82a2c800p-2, -0x1.c5e87185e67b6p-2, -0x1.b6f3fc8c61e5bp-2,
    -0x1.a827999fcef32p-2, -0x1.998188e816bf0p-2, -0x1.8b00196b3d022p-2, -0x1.7ca1a832d0f84p-2,
    -0x1.6e649f7d78649p-2, -0x1.604775fbb27dfp-2, -0x1.5248ae1701b17p-2, -0x1.4466d542bac92p-2,
    -0x1.36a08355c63dcp-2, -0x1.28f459ecad74dp-2, -0x1.1b6103d3597e9p-2, -0x1.0de53475f3b3cp-2,
    -0x1.007fa758626aep-2, -0x1.e65e3f27c9f2ap-3, -0x1.cbe4ceb4b4cf2p-3, -0x1.b1909efd8b762p-3,
    -0x1.975f5e0553158p-3, -0x1.7d4ec54fb5968p-3, -0x1.635c990ce0d36p-3, -0x1.4986a74cf4e57p-3,
    -0x1.2fcac73a60640p-3, -0x1.1626d85a91e70p-3, -0x1.f93183a8db9e9p-4, -0x1.c63ce377fc802p-4,
    -0x1.936bb8c5b2da2p-4, -0x1.60b9f7597fdecp-4, -0x1.2e239ccff3831p-4, -0x1.f7495ea3f3783p-5,
    -0x1.927278a3b1162p-5, -0x1.2dbaae9a05db0p-5, -0x1.92346247a91f0p-6, -0x1.9224e047e368ep-7,
};

// tan r = r + r^3 (ha_0 + ha_1 r^2 + ..), |r| <= pi/128, relative error below 2^-67.2.
inline constexpr double ha_0 = 0x1.5555555555554p-2;
inline constexpr double ha_1 = 0x1.111111111ca0fp-3;
inline constexpr double ha_2 = 0x1.ba1b9e30717b1p-5;
inline constexpr double ha_3 = 0x1.6685e2abf50aep-6;

// tan r = r + r^3 (la_0 + la_1 r^2 + ..), |r| <= pi/512, relative error below 2^-53.0.
inline constexpr double la_0 = 0x1.55555554c461cp-2;
inline constexpr double la_1 = 0x1.11128cc9f8c98p-3;

// tan r = r + r^3 (ep_0 + ep_1 r^2 + ..), |r| <= pi/512, relative error below 2^-34.8.
inline constexpr double ep_0 = 0x1.55566c8e0adaap-2;

}  // namespace orin::vector_math::tangent_d_data

#endif
