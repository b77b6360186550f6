import { useEffect, useRef } from "react";
import uPlot from "uplot";
import "uplot/dist/uPlot.min.css";
import type { Series } from "./series";

/** The colours of the lines, by the names that the style sheet gives them. */
const lines = ["--line-1", "--line-2", "--line-3", "--line-4", "--line-5", "--line-6"];
const height = 220;

function colour(name: string): string {
    return getComputedStyle(document.documentElement).getPropertyValue(name).trim();
}

function timeText(seconds: number): string {
    return new Date(seconds * 1000).toLocaleTimeString("en-GB");
}

function make(element: HTMLElement, streams: string[]): uPlot {
    const axis = { stroke: colour("--muted"), grid: { stroke: colour("--border"), width: 1 }, ticks: { show: false } };
    const options: uPlot.Options = {
        width: element.clientWidth,
        height,
        padding: [null, 28, null, null],
        scales: { y: { range: (_, __, max) => [0, Math.max(1, Math.ceil(max * 1.1))] } },
        axes: [
            { ...axis, space: 80, values: (_, seconds) => seconds.map(timeText) },
            { ...axis, size: 36 },
        ],
        series: [
            { label: "Time", value: (_, seconds) => (seconds === null ? "\u2013" : timeText(seconds)) },
            ...streams.map((label, index) => ({
                label,
                stroke: colour(lines[index % lines.length] ?? "--line-1"),
                width: 2,
                value: (_: uPlot, value: number | null) => value?.toFixed(1) ?? "\u2013",
            })),
        ],
    };
    return new uPlot(options, [[]], element);
}

/** Objects in the picture over the last minutes, a line for each stream. */
export function Plot({ series, streams }: { series: Series; streams: string[] }) {
    const box = useRef<HTMLDivElement>(null);
    const names = streams.join();
    useEffect(() => {
        const element = box.current;
        if (element === null) return undefined;
        let plot: uPlot;
        const draw = () => plot.setData(series.columns(Date.now()));
        const start = () => {
            plot = make(element, names === "" ? [] : names.split(","));
            draw();
        };
        start();
        const timer = setInterval(draw, 1000);
        const observer = new ResizeObserver(() => plot.setSize({ width: element.clientWidth, height }));
        observer.observe(element);
        const scheme = window.matchMedia("(prefers-color-scheme: dark)");
        const again = () => {
            plot.destroy();
            start();
        };
        scheme.addEventListener("change", again);
        return () => {
            scheme.removeEventListener("change", again);
            observer.disconnect();
            clearInterval(timer);
            plot.destroy();
        };
    }, [series, names]);
    return <div className="plot" ref={box} role="img" aria-label="Objects in the picture over the last two minutes" />;
}
