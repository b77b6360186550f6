/** Numbers of objects over time, as means of equal intervals: what a plot draws. */
export class Series {
    private readonly sums = new Map<string, { start: number; sum: number; count: number }[]>();

    /** interval, span: length of one mean and of all that is kept, in milliseconds. */
    constructor(
        private readonly interval: number,
        private readonly span: number,
    ) {}

    add(stream: string, at: number, value: number): void {
        const start = Math.floor(at / this.interval) * this.interval;
        const bins = this.sums.get(stream) ?? [];
        this.sums.set(stream, bins);
        const last = bins.at(-1);
        if (last?.start === start) {
            last.sum += value;
            last.count += 1;
        } else {
            bins.push({ start, sum: value, count: 1 });
            while (bins[0] !== undefined && bins[0].start <= start - this.span) bins.shift();
        }
    }

    streams(): string[] {
        return [...this.sums.keys()].sort();
    }

    /** Columns for the time until now: seconds since 1970, then the means of each stream; null where there was none. */
    columns(now: number): [number[], ...(number | null)[][]] {
        const end = Math.floor(now / this.interval) * this.interval;
        const starts: number[] = [];
        for (let start = end - this.span + this.interval; start <= end; start += this.interval) starts.push(start);
        const columns = this.streams().map((stream) => {
            const means = new Map(this.sums.get(stream)?.map((bin) => [bin.start, bin.sum / bin.count]));
            return starts.map((start) => means.get(start) ?? null);
        });
        return [starts.map((start) => start / 1000), ...columns];
    }
}
