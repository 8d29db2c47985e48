// Values of frames that come one after the other, of which the oldest are forgotten.

type Values = Float64Array | Int32Array | Float32Array;
type Kind<T extends Values> = new (length: number) => T;

/**
 * What was appended last, at places that count from the first value ever. A view that was taken stays as
 * it is: values are written behind it, or elsewhere.
 */
export class Ring<T extends Values> {
  private values: T;
  private used = 0; // of values
  private begin = 0; // in values: the oldest that is kept

  constructor(
    private readonly kind: Kind<T>,
    private place: number,
  ) {
    this.values = new kind(4096);
  }

  /** The place of the oldest value, and the one behind the newest. */
  get first(): number {
    return this.place;
  }
  get end(): number {
    return this.place + this.used - this.begin;
  }

  append(more: ArrayLike<number>): void {
    if (this.used + more.length > this.values.length) this.move(more.length);
    this.values.set(more, this.used);
    this.used += more.length;
  }

  forgetBefore(place: number): void {
    const count = Math.min(Math.max(0, place - this.place), this.used - this.begin);
    this.begin += count;
    this.place += count;
  }

  view(from: number, to: number): T {
    const at = this.begin - this.place;
    return this.values.subarray(at + Math.max(from, this.first), at + Math.min(to, this.end)) as T;
  }

  /** Into new memory, with as much room again as is in use. */
  private move(more: number): void {
    const kept = this.values.subarray(this.begin, this.used);
    this.values = new this.kind(2 * (kept.length + more));
    this.values.set(kept);
    this.used = kept.length;
    this.begin = 0;
  }
}
