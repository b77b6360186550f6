// @vitest-environment jsdom
import { cleanup, render, screen } from "@testing-library/react";
import { afterEach, describe, expect, it } from "vitest";
import type { CalibrationAnswer } from "@/api/types";
import { AnswerOverlay } from "@/calibration/answer_overlay";
import { AnswerView } from "@/calibration/answer_view";

const answer: CalibrationAnswer = {
    calibration: { tilt: 5.123, roll: 0, height_m: 7.15, vertical_fov: 26.9 },
    standard_errors: { tilt: 0.14, height_m: 0.11, vertical_fov: 0.54 },
    residuals: [],
    warnings: ["another mounting explains the references as well"],
    horizon: { from: [-100, 40], to: [868, 20] },
    grid: [
        { from: [-5000, 300], to: [5000, 300], label: "20 m", label_at: [384, 300] },
        { from: [384, 100], to: [384, 9000], label: "", label_at: null },
        { from: [-10, 700], to: [800, 700], label: "", label_at: null },
    ],
};
const size = { width: 768, height: 576 };

function draw(shown: CalibrationAnswer) {
    const { container } = render(
        <svg>
            <AnswerOverlay answer={shown} size={size} unit={1} />
        </svg>,
    );
    return container;
}

afterEach(cleanup);

describe("an answer", () => {
    it("is drawn within the picture: the horizon, the grid and its metres", () => {
        const container = draw(answer);
        const horizon = container.querySelector(".horizon");
        expect([horizon?.getAttribute("x1"), horizon?.getAttribute("x2")]).toEqual(["0", "768"]);
        expect(container.querySelectorAll(".grid")).toHaveLength(2);
        expect(container.querySelector(".grid")?.getAttribute("x1")).toBe("0");
        expect([...container.querySelectorAll("text")].map((text) => text.textContent)).toEqual(["20 m"]);
    });

    it("whose horizon lies outside has none, and says so", () => {
        expect(draw({ ...answer, horizon: null }).querySelector(".horizon")).toBeNull();
        render(<AnswerView answer={{ ...answer, horizon: null }} />);
        expect(screen.queryByText("The horizon lies outside the picture.")).not.toBeNull();
    });

    it("tells each parameter with its error, a dash for what was known, and warnings", () => {
        render(<AnswerView answer={answer} />);
        const rows = screen.getAllByRole("row").map((row) => [...row.children].map((cell) => cell.textContent));
        expect(rows.slice(1)).toEqual([
            ["Tilt", "5.12 \u00b0", "0.14"],
            ["Roll", "0.00 \u00b0", "\u2013"],
            ["Height", "7.15 m", "0.11"],
            ["Vertical field of view", "26.90 \u00b0", "0.54"],
        ]);
        expect(screen.queryByText("another mounting explains the references as well")).not.toBeNull();
    });
});
