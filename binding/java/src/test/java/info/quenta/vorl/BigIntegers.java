package info.quenta.vorl;

import java.math.BigInteger;

final class BigIntegers {
    static final BigInteger MAX = BigInteger.ONE.shiftLeft(64).subtract(BigInteger.ONE);

    private BigIntegers() {}

    static BigInteger of(long value) { return BigInteger.valueOf(value); }
}
