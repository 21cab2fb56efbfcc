// pow_s_data.h: table and polynomial of the logarithm inside the single-precision power, made by tools/tables/pow_s.py.
// SPDX-License-Identifier: MIT
// clang-format off
#ifndef ORIN_VECTOR_MATH_DATA_POW_S_DATA_H
#define ORIN_VECTOR_MATH_DATA_POW_S_DATA_H

namespace orin::vector_math::pow_s_data {

// For a = 3/4, 3/4 + 1/128 .. 3/2: 1/(2 a ln 2) and log2(a)/2.
alignas(64) inline constexpr double logarithms[194] = {
    0x1.ec709dc3a03fdp-1, -0x1.a8ff971810a5ep-3, 0x1.e75cfb25e5daep-1, -0x1.99b072a96c6b2p-3,
    0x1.e263de767da1dp-1, -0x1.8a8980abfbd32p-3, 0x1.dd8479f4003dfp-1, -0x1.7b89f02cf2aadp-3,
    0x1.d8be0817f5ffep-1, -0x1.6cb0f6865c8eap-3, 0x1.d40fcb2e891bcp-1, -0x1.5dfdcf1eeae0ep-3,
    0x1.cf790cf45a967p-1, -0x1.4f6fbb2cec598p-3, 0x1.caf91e3a0f252p-1, -0x1.4106017c3eca3p-3,
    0x1.c68f568d31760p-1, -0x1.32bfee370ee68p-3, 0x1.c23b13e60edb5p-1, -0x1.249cd2b13cd6cp-3,
    0x1.bdfbba5a3a303p-1, -0x1.169c05363f158p-3, 0x1.b9d0b3d3671a3p-1, -0x1.08bce0d95fa38p-3,
    0x1.b5b96fca558e1p-1, -0x1.f5fd8a9063e35p-4, 0x1.b1b563058ac9dp-1, -0x1.dac22d3e441d3p-4,
    0x1.adc4075b99d15p-1, -0x1.bfc67a7fff4ccp-4, 0x1.a9e4db78c1f20p-1, -0x1.a5094b54d2828p-4,
    0x1.a61762a7aded9p-1, -0x1.8a8980abfbd32p-4, 0x1.a25b249d2231bp-1, -0x1.7046031c79f85p-4,
    0x1.9eafad466bffep-1, -0x1.563dc29ffacb2p-4, 0x1.9b148c9a669bbp-1, -0x1.3c6fb650cde51p-4,
    0x1.9789566cee8d2p-1, -0x1.22dadc2ab3497p-4, 0x1.940da2449dbe4p-1, -0x1.097e38ce60649p-4,
    0x1.90a10b32adc32p-1, -0x1.e0b1ae8f2fd56p-5, 0x1.8d432facdfeebp-1, -0x1.aed391ab6674ep-5,
    0x1.89f3b1694cffep-1, -0x1.7d60496cfbb4cp-5, 0x1.86b2353c0032ap-1, -0x1.4c560fe68af88p-5,
    0x1.837e62f643580p-1, -0x1.1bb32a600549dp-5, 0x1.8057e54783511p-1, -0x1.d6ebd1f1febfep-6,
    0x1.7d3e699fb5deep-1, -0x1.77394c9d958d5p-6, 0x1.7a31a0132b331p-1, -0x1.184b8e4c56af8p-6,
    0x1.77313b3fb70c1p-1, -0x1.743ee861f3556p-7, 0x1.743cf0331e6ccp-1, -0x1.72c7ba20f7327p-8,
    0x1.71547652b82fep-1, 0x0.0p+0, 0x1.6e7787442fd04p-1, 0x1.6fe50b6ef0851p-8,
    0x1.6ba5ded75ac4dp-1, 0x1.6e79685c2d22ap-7, 0x1.68df3af111c54p-1, 0x1.11cd1d5133413p-6,
    0x1.66235b77002e7p-1, 0x1.6bad3758efd87p-6, 0x1.6372023c5c923p-1, 0x1.c4dfab90aab5fp-6,
    0x1.60caf2ef7e44bp-1, 0x1.0eb389fa29f9bp-5, 0x1.5e2df3084471bp-1, 0x1.3aa2fdd27f1c3p-5,
    0x1.5b9ac9b743f0dp-1, 0x1.663f6fac91316p-5, 0x1.59113fd5b1b17p-1, 0x1.918a16e46335bp-5,
    0x1.56911fd6002c7p-1, 0x1.bc84240adabbap-5, 0x1.541a35b526d93p-1, 0x1.e72ec117fa5b2p-5,
    0x1.51ac4eec8b247p-1, 0x1.08c588cda79e4p-4, 0x1.4f473a6482e4bp-1, 0x1.1dcd197552b7bp-4,
    0x1.4ceac86768bb6p-1, 0x1.32ae9e278ae1ap-4, 0x1.4a96ca953b3e9p-1, 0x1.476a9f983f74dp-4,
    0x1.484b13d7c02a9p-1, 0x1.5c01a39fbd688p-4, 0x1.46077857253dbp-1, 0x1.70742d4ef027fp-4,
    0x1.43cbcd6f18b64p-1, 0x1.84c2bd02f03b3p-4, 0x1.4197e9a453c13p-1, 0x1.98edd077e70dfp-4,
    0x1.3f6ba49a91758p-1, 0x1.acf5e2db4ec94p-4, 0x1.3d46d70aed42ep-1, 0x1.c0db6cdd94deep-4,
    0x1.3b295abaa3ffep-1, 0x1.d49ee4c325970p-4, 0x1.39130a7233050p-1, 0x1.e840be74e6a4dp-4,
    0x1.3703c1f4d0ffep-1, 0x1.fbc16b902680ap-4, 0x1.34fb5df83c645p-1, 0x1.0790adbb03009p-3,
    0x1.32f9bc1cdb958p-1, 0x1.11307dad30b76p-3, 0x1.30febae62b18bp-1, 0x1.1ac05b291f070p-3,
    0x1.2f0a39b3764ebp-1, 0x1.24407ab0e073ap-3, 0x1.2d1c18b8d7636p-1, 0x1.2db10fc4d9aafp-3,
    0x1.2b3438f87b4a7p-1, 0x1.37124cea4cdedp-3, 0x1.29527c3c26cacp-1, 0x1.406463b1b0449p-3,
    0x1.2776c50ef9bfep-1, 0x1.49a784bcd1b8bp-3, 0x1.25a0f6b76ddcfp-1, 0x1.52dbdfc4c96b3p-3,
    0x1.23d0f5318e5ecp-1, 0x1.5c01a39fbd688p-3, 0x1.2206a529663b9p-1, 0x1.6518fe4677ba7p-3,
    0x1.2041ebf5a27cdp-1, 0x1.6e221cd9d0cdep-3, 0x1.1e82af92668b9p-1, 0x1.771d2ba7efb3cp-3,
    0x1.1cc8d69c50564p-1, 0x1.800a563161c54p-3, 0x1.1b14484baa4c9p-1, 0x1.88e9c72e0b226p-3,
    0x1.1964ec6fc9491p-1, 0x1.91bba891f1709p-3, 0x1.17baab6a94976p-1, 0x1.9a802391e232fp-3,
    0x1.16156e2c365a4p-1, 0x1.a33760a7f6051p-3, 0x1.14751e2ef2aa9p-1, 0x1.abe18797f1f49p-3,
    0x1.12d9a57323dc3p-1, 0x1.b47ebf73882a1p-3, 0x1.1142ee7b5a678p-1, 0x1.bd0f2e9e79031p-3,
    0x1.0fb0e4489f08cp-1, 0x1.c592fad295b56p-3, 0x1.0e237256d5b6cp-1, 0x1.ce0a4923a587dp-3,
    0x1.0c9a84994022dp-1, 0x1.d6753e032ea0fp-3, 0x1.0b1607771e821p-1, 0x1.ded3fd442364cp-3,
    0x1.0995e7c86d702p-1, 0x1.e726aa1e754d2p-3, 0x1.081a12d2bfc6bp-1, 0x1.ef6d67328e220p-3,
    0x1.06a2764633554p-1, 0x1.f7a8568cb06cfp-3, 0x1.052f003a7f6cdp-1, 0x1.ffd799a83ff9bp-3,
    0x1.03bf9f2c1c437p-1, 0x1.03fda8b97997fp-2, 0x1.025441f9823abp-1, 0x1.0809cf27f703dp-2,
    0x1.00ecd7e080215p-1, 0x1.0c10500d63aa6p-2, 0x1.ff12a0f74f227p-2, 0x1.10113b153c8eap-2,
    0x1.fc53377f9d292p-2, 0x1.140c9faa1e544p-2, 0x1.f99b53f34b8cdp-2, 0x1.18028cf72976ap-2,
    0x1.f6ead796c4570p-2, 0x1.1bf311e95d00ep-2, 0x1.f441a454f4101p-2, 0x1.1fde3d30e8126p-2,
    0x1.f19f9cbae7ffdp-2, 0x1.23c41d42727c8p-2, 0x1.ef04a3f38faa1p-2, 0x1.27a4c0585cbf8p-2,
    0x1.ec709dc3a03fdp-2, 0x1.2b803473f7ad1p-2,
};

// log2(1 + 2 r ln 2)/2 = r + r^2 (q0 + q1 r + q2 r^2), relative error below 2^-35.4 next to 1.
inline constexpr double q0 = -0x1.62e42fef90ed3p-1;
inline constexpr double q1 = 0x1.47fe466005f9fp-1;
inline constexpr double q2 = -0x1.5505c1a0d645bp-1;

// log2(1 + f) = f (ep_0 + ep_1 f + ..), sqrt 1/2 <= 1 + f <= sqrt 2, relative error below 2^-19.7.
inline constexpr float ep_0 = 0x1.71548e0000000p+0f;
inline constexpr float ep_1 = -0x1.7156900000000p-1f;
inline constexpr float ep_2 = 0x1.ec29720000000p-2f;
inline constexpr float ep_3 = -0x1.6fff460000000p-2f;
inline constexpr float ep_4 = 0x1.2ecbd00000000p-2f;
inline constexpr float ep_5 = -0x1.13c7740000000p-2f;
inline constexpr float ep_6 = 0x1.5f79b40000000p-3f;

// 2^f = 1 + f (power_1 + power_2 f + power_3 f^2), |f| <= 1/2, relative error below 2^-12.4.
inline constexpr float power_1 = 0x1.62e8420000000p-1f;
inline constexpr float power_2 = 0x1.efad020000000p-3f;
inline constexpr float power_3 = 0x1.c6b0f00000000p-5f;

}  // namespace orin::vector_math::pow_s_data

#endif
