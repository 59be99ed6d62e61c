-- What stands for the numbers that records hold.
return {
    component = { [1] = "阀门", [2] = "弯头", [3] = "三通", [4] = "支架" },
    state = { [0] = "设计", [1] = "校核", [2] = "发布" },
}
